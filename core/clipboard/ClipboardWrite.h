#pragma once

#include "core/support/Bytes.h"

#include <optional>
#include <string>
#include <variant>

namespace velmo {

/// What the phone asks to have put on the clipboard.
struct ClipboardWrite {
    struct Text {
        std::string text;
        bool operator==(const Text&) const = default;
    };

    /// To be marked as private for whoever else watches the clipboard.
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

    /// Reads {"text":"...","concealed":true} or {"png":"base64"}, within the limits of
    /// `PasteboardPolicy`; members of other names are ignored. Beside an image "concealed"
    /// means nothing, but must be a boolean all the same. A text is not empty, holds no NUL and is
    /// not trimmed. Absent for anything else, such as both a text and an image. However large the
    /// body, it is held no second time.
    static std::optional<ClipboardWrite> parse(ByteView body);

    bool operator==(const ClipboardWrite&) const = default;
};

} // namespace velmo
