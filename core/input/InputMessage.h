#pragma once

#include "core/input/Gesture.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmo {

/// One line from the phone: continuous input of pointer and keyboard.
///
/// A line is a JSON object whose member "type" names the message. Members that a message does not
/// have are ignored, but in a gesture, which may have no third one.
struct InputMessage {
    struct Move { // "move"
        std::int64_t dx = 0;
        std::int64_t dy = 0;
        bool operator==(const Move&) const = default;
    };

    struct Scroll { // "scroll"
        std::int64_t dx = 0;
        std::int64_t dy = 0;
        bool operator==(const Scroll&) const = default;
    };

    struct Zoom {               // "zoom"
        std::int64_t steps = 0; ///< 1...8 either way
        bool operator==(const Zoom&) const = default;
    };

    struct Button { // "button"
        bool right = false;
        bool down = false;
        bool operator==(const Button&) const = default;
    };

    /// Unlike a `TypeTextRequest` it may hold control characters: whoever types it must drop them.
    struct Text { // "text"
        std::string text;
        std::string target;
        bool operator==(const Text&) const = default;
    };

    struct Key {          // "key"
        std::string name; ///< one of `keys`, which are not the names of `Hotkey::keys`
        std::string target;
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

    /// Absent for anything but one whole message within its limits: dx and dy from -2048 to 2048,
    /// a text of 1 to 1024 UTF-16 units, a target of 1 to 16 digits without a leading zero; every
    /// number an integer, every flag a boolean.
    static std::optional<InputMessage> decode(std::string_view line);

    bool operator==(const InputMessage&) const = default;
};

} // namespace velmo
