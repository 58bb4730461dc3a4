#include "core/clipboard/ClipboardWrite.h"
#include "core/clipboard/PasteboardPolicy.h"
#include "core/support/Base64.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"
#include "fuzz/LongTexts.h"

namespace velmo::Fuzz {

namespace {

std::string bodyOf(const ClipboardWrite& write) {
    std::map<std::string, std::string> members;
    if (const auto* image = std::get_if<ClipboardWrite::Png>(&write.content)) {
        require(PasteboardPolicy::pngDimensionsOK(image->data));
        members["png"] = Base64::encode(image->data);
    } else {
        const auto* plain = std::get_if<ClipboardWrite::Text>(&write.content);
        const std::string& text = plain != nullptr
                                      ? plain->text
                                      : std::get<ClipboardWrite::ConcealedText>(write.content).text;
        require(PasteboardPolicy::textFits(text) && !text.contains('\0')
                && Text::isValidUtf8(text));
        members["text"] = text;
    }
    std::string body = encodeJson(members).value();
    if (std::holds_alternative<ClipboardWrite::ConcealedText>(write.content))
        body.insert(1, R"("concealed":true,)");
    return body;
}

void checkClipboardWrites(Input input) {
    const std::string body = lengthened(input.rest());
    const auto parse = [](std::string_view text) { return ClipboardWrite::parse(bytesOf(text)); };
    requireSpellingIsIgnored(body, parse, PasteboardPolicy::writeMaxBytes);
    if (const auto write = parse(body))
        require(parse(bodyOf(*write)) == write);
}

const Target clipboardWritesTarget("ClipboardWrites", checkClipboardWrites);

} // namespace

} // namespace velmo::Fuzz
