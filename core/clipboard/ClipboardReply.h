#pragma once

#include "core/clipboard/PasteboardPolicy.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Describes the clipboard to the phone. `text` and `png` are private to the user: never log them.
struct ClipboardReply {
    std::optional<std::string> kind; ///< "text", "image", "empty", "too-large"
    std::optional<std::string> text;
    std::optional<std::string> png; ///< base64
    std::optional<bool> concealed;  ///< true, or absent
    std::optional<std::int64_t> changeCount;
    std::optional<std::vector<std::string>> types; ///< as `reporting` cuts them

    /// Returns the reply for private content, which tells nothing else, not even the change count.
    static ClipboardReply ofConcealed();

    // These functions check no limits: the caller asks `PasteboardPolicy` first.
    static ClipboardReply ofEmpty(std::int64_t changeCount);
    static ClipboardReply ofTooLarge(std::int64_t changeCount);
    static ClipboardReply ofText(std::string_view text, std::int64_t changeCount);
    static ClipboardReply ofImage(ByteView png, std::int64_t changeCount);

    /// Returns the reply with the first `PasteboardPolicy::reportedTypesMax` type identifiers, each
    /// cut to 200 characters. A concealed reply stays as it is.
    [[nodiscard]] ClipboardReply reporting(PasteboardPolicy::Types listed) const;

    static constexpr auto fields = std::tuple{
        field("kind", &ClipboardReply::kind),
        field("text", &ClipboardReply::text),
        field("png", &ClipboardReply::png),
        field("concealed", &ClipboardReply::concealed),
        field("changeCount", &ClipboardReply::changeCount),
        field("types", &ClipboardReply::types),
    };
    bool operator==(const ClipboardReply&) const = default;
};

} // namespace velmo
