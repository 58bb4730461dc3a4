#include "core/clipboard/ClipboardReply.h"

#include "core/support/Base64.h"
#include "core/support/Text.h"

#include <algorithm>
#include <cstddef>

namespace velmo {

namespace {

constexpr std::size_t maxType = 200; // characters

} // namespace

ClipboardReply ClipboardReply::ofConcealed() {
    return {.concealed = true};
}

ClipboardReply ClipboardReply::ofEmpty(std::int64_t changeCount) {
    return {.kind = "empty", .changeCount = changeCount};
}

ClipboardReply ClipboardReply::ofTooLarge(std::int64_t changeCount) {
    return {.kind = "too-large", .changeCount = changeCount};
}

ClipboardReply ClipboardReply::ofText(std::string_view text, std::int64_t changeCount) {
    return {.kind = "text", .text = std::string(text), .changeCount = changeCount};
}

ClipboardReply ClipboardReply::ofImage(ByteView png, std::int64_t changeCount) {
    return {.kind = "image", .png = Base64::encode(png), .changeCount = changeCount};
}

ClipboardReply ClipboardReply::reporting(PasteboardPolicy::Types listed) const {
    ClipboardReply reply = *this;
    if (reply.concealed == true)
        return reply;
    auto& kept = reply.types.emplace();
    for (const std::string& type :
         listed.first(std::min(listed.size(), PasteboardPolicy::reportedTypesMax)))
        kept.emplace_back(Text::prefix(type, maxType));
    return reply;
}

} // namespace velmo
