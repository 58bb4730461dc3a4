#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/DetachKey.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmo {

/// The key that a person has chosen for detaching, in place of Control-]. In front of
/// `PtyAttach::DetachKey` the two keys change places, and behind it they change back, so that
/// Control-] is then an ordinary key.
class DetachChoice {
public:
    /// Reads a key with Control: "C-a" or "^a" in either case, "C-\", "C-]", "C-^" or "C-_". Absent
    /// for any other text, and for the keys that are also Tab, line feed, Enter and Escape.
    static std::optional<DetachChoice> parse(std::string_view text);

    /// Returns the bytes with the chosen key and Control-] in each other's place.
    [[nodiscard]] Bytes swapped(ByteView bytes) const;

private:
    std::uint8_t key_ = PtyAttach::DetachKey::escape;
};

} // namespace velmo
