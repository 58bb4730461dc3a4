#pragma once

#include "core/input/Gesture.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmo {

/// One line of the phone's continuous input of pointer and keyboard.
///
/// A line is a JSON object whose member "type" names the message. Unknown members are ignored,
/// except in a gesture, where they are refused.
struct InputMessage {
    struct Move {            // "move"
        std::int64_t dx = 0; ///< -2048 to 2048
        std::int64_t dy = 0; ///< -2048 to 2048
        bool operator==(const Move&) const = default;
    };

    struct Scroll {          // "scroll"
        std::int64_t dx = 0; ///< -2048 to 2048
        std::int64_t dy = 0; ///< -2048 to 2048
        bool operator==(const Scroll&) const = default;
    };

    struct Zoom {               // "zoom"
        std::int64_t steps = 0; ///< -8 to 8, but not 0
        bool operator==(const Zoom&) const = default;
    };

    struct Button { // "button"
        bool right = false;
        bool down = false;
        bool operator==(const Button&) const = default;
    };

    /// Unlike that of a `TypeTextRequest`, the text may contain control characters, and be longer:
    /// `TypeTextRequest::ofText` makes of it what may be typed.
    struct Text {           // "text"
        std::string text;   ///< 1 to 1024 UTF-16 units
        std::string target; ///< 1 to 16 digits without a leading zero
        bool operator==(const Text&) const = default;
    };

    /// As with a text, `FocusTracker::accepts` is asked for the target before the key is pressed: a
    /// Return or a Backspace does harm too where the focus has moved to. `hotkeyOf` gives its key.
    struct Key {            // "key"
        std::string name;   ///< one of `keys`, which are not the names of `Hotkey::keys`
        std::string target; ///< as in `Text`
        bool operator==(const Key&) const = default;
    };

    struct Ping { // "ping"
        bool operator==(const Ping&) const = default;
    };

    struct Release { // "release"
        bool operator==(const Release&) const = default;
    };

    struct Focus { // "focus"
        bool operator==(const Focus&) const = default;
    };

    using Content =
        std::variant<Move, Scroll, Zoom, Button, Text, Key, Gesture, Ping, Release, Focus>;

    static constexpr std::size_t maxLine = 8192; ///< bytes

    static constexpr auto keys = std::to_array<std::string_view>(
        {"Backspace", "Delete", "Enter", "Tab", "Escape", "ArrowLeft", "ArrowRight", "ArrowUp",
         "ArrowDown", "Home", "End"});

    Content content;

    /// Returns the message of a line, or nothing if it is not one whole message within the limits
    /// above. Every number is an integer and every flag a boolean.
    static std::optional<InputMessage> decode(std::string_view line);

    bool operator==(const InputMessage&) const = default;
};

} // namespace velmo
