#include "core/clipboard/ClipboardWrite.h"

#include "core/clipboard/PasteboardPolicy.h"
#include "core/support/Base64.h"
#include "core/support/JsonOutline.h"
#include "core/support/Record.h"

#include <string_view>
#include <utility>

namespace velmo {

namespace {

/// Long texts are left in the outline.
struct Body {
    std::optional<std::string> text;
    std::optional<std::string> png;
    std::optional<bool> concealed;

    static constexpr auto fields = std::tuple{field("text", &Body::text), field("png", &Body::png),
                                              field("concealed", &Body::concealed)};
};

std::optional<std::string> wholeText(std::string read, const std::optional<JsonLongText>& left) {
    const auto append = [&](std::string_view piece) {
        read += piece;
        return read.size() <= PasteboardPolicy::textMaxBytes;
    };
    if ((left && !left->read(append)) || !PasteboardPolicy::textFits(read) || read.contains('\0'))
        return std::nullopt;
    return read;
}

std::optional<Bytes> image(std::string_view read, const std::optional<JsonLongText>& left) {
    Base64::Decoder decoder(left ? left->spelledLength() : read.size());
    const auto append = [&](std::string_view piece) { return decoder.append(piece); };
    if (!(left ? left->read(append) : append(read)))
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
