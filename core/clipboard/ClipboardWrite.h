#pragma once

#include "core/support/Bytes.h"

#include <optional>
#include <string>
#include <variant>

namespace velmo {

/// Asks the host to put a text or an image on the clipboard.
struct ClipboardWrite {
    struct Text {
        std::string text;
        bool operator==(const Text&) const = default;
    };

    /// A text that is marked as private, so that other applications don't keep it.
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
    /// `PasteboardPolicy`; absent if the body is neither, or both. The text must not be empty or
    /// contain NUL, and is not trimmed. Beside an image "concealed" has no effect, but must still
    /// be a boolean. Unknown members are ignored. A long text or image is not copied a second time.
    /// While the body is read, the value of an ignored member takes fifteen times its length in
    /// memory, and up to forty times if it has numbers beyond 64 bits or beyond double.
    static std::optional<ClipboardWrite> parse(ByteView body);

    bool operator==(const ClipboardWrite&) const = default;
};

} // namespace velmo
