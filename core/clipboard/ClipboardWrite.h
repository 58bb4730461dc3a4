#pragma once

#include "core/support/Bytes.h"

#include <optional>
#include <string>
#include <variant>

namespace velmo {

/// What the phone asks the host to put on the clipboard.
struct ClipboardWrite {
    struct Text {
        std::string text;
        bool operator==(const Text&) const = default;
    };

    /// A text to be marked as private, so that other applications don't keep it.
    struct ConcealedText {
        std::string text;
        bool operator==(const ConcealedText&) const = default;
    };

    struct Png {
        Bytes data;
        bool operator==(const Png&) const = default;
    };

    using Content = std::variant<Text, ConcealedText, Png>;

    Content content;

    /// Reads {"text":"...","concealed":true} or {"png":"base64"} within the limits of
    /// `PasteboardPolicy`; absent if the body is neither, or both. The text is not empty and
    /// contains no NUL; it is not trimmed. Beside an image "concealed" has no effect, but must be a
    /// boolean all the same. Unknown members are ignored.
    /// A long text or image takes no second copy of itself. What stands in a member that is ignored
    /// takes fifteen times its length for as long as the body is read, and up to forty times if
    /// there are numbers beyond 64 bits or beyond double.
    static std::optional<ClipboardWrite> parse(ByteView body);

    bool operator==(const ClipboardWrite&) const = default;
};

} // namespace velmo
