#include "core/clipboard/ClipboardWrite.h"

#include "core/clipboard/PasteboardPolicy.h"
#include "core/support/Base64.h"
#include "core/support/JsonOutline.h"
#include "core/support/Record.h"

#include <string_view>
#include <utility>

namespace velmo {

namespace {

/// The members of a write. A long text is empty here and is read from the outline instead.
struct Body {
    std::optional<std::string> text;
    std::optional<std::string> png;
    std::optional<bool> concealed;

    static constexpr auto fields = std::tuple{field("text", &Body::text), field("png", &Body::png),
                                              field("concealed", &Body::concealed)};
};

/// Returns the text of a write, or nothing if it may not be written. `inOutline` is the text itself
/// if it is long.
std::optional<std::string> wholeText(std::string text,
                                     const std::optional<JsonLongText>& inOutline) {
    const auto append = [&](std::string_view piece) {
        text += piece;
        return text.size() <= PasteboardPolicy::textMaxBytes;
    };
    if ((inOutline && !inOutline->read(append)) || !PasteboardPolicy::textFits(text)
        || text.contains('\0'))
        return std::nullopt;
    return text;
}

/// Returns the image of a write, or nothing if it may not be written. `inOutline` is the base64
/// itself if it is long.
std::optional<Bytes> image(std::string_view base64, const std::optional<JsonLongText>& inOutline) {
    Base64::Decoder decoder(inOutline ? inOutline->spelledLength() : base64.size());
    const auto append = [&](std::string_view piece) { return decoder.append(piece); };
    if (!(inOutline ? inOutline->read(append) : append(base64)))
        return std::nullopt;
    auto bytes = decoder.finish();
    if (!bytes || bytes->size() > PasteboardPolicy::imageMaxBytes
        || !PasteboardPolicy::pngDimensionsOK(*bytes))
        return std::nullopt;
    return bytes;
}

ClipboardWrite ofText(std::string text, bool concealed) {
    if (concealed)
        return {.content = ClipboardWrite::ConcealedText{std::move(text)}};
    return {.content = ClipboardWrite::Text{std::move(text)}};
}

ClipboardWrite ofPng(Bytes data) {
    return {.content = ClipboardWrite::Png{std::move(data)}};
}

} // namespace

std::optional<ClipboardWrite> ClipboardWrite::parse(ByteView body) {
    if (body.size() > PasteboardPolicy::writeMaxBytes)
        return std::nullopt;
    const auto outline = JsonOutline::parse(textOf(body), {"text", "png"});
    auto read = outline ? decodeRecord<Body>(outline->object()) : std::nullopt;
    if (!read || read->text.has_value() == read->png.has_value())
        return std::nullopt;
    if (read->png)
        return image(*read->png, outline->longText("png")).transform(ofPng);
    return wholeText(*std::move(read->text), outline->longText("text"))
        .transform([&](std::string text) {
            return ofText(std::move(text), read->concealed.value_or(false));
        });
}

} // namespace velmo
