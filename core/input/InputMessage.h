#pragma once

#include "core/input/Gesture.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmo {

/// A line of the phone's continuous input of pointer and keyboard.
///
/// The line is a JSON object; its member "type" names the message. Unknown members are ignored,
/// except in a gesture, where they are refused.
struct InputMessage {
    /// Moves the pointer. While a button is down, the move is a drag (`HeldButtons::dragged`).
    struct Move {            // "move"
        std::int64_t dx = 0; ///< points to the right, -2048 to 2048
        std::int64_t dy = 0; ///< points down, -2048 to 2048
        bool operator==(const Move&) const = default;
    };

    /// Moves the content under the pointer, as a finger on a screen does: a positive `dy` shows
    /// what stands above. A scroll event in pixels takes `dy` as its wheel 1 and `dx` as its wheel
    /// 2, with the same signs.
    struct Scroll {          // "scroll"
        std::int64_t dx = 0; ///< points to the right, -2048 to 2048
        std::int64_t dy = 0; ///< points down, -2048 to 2048
        bool operator==(const Scroll&) const = default;
    };

    /// Zooms: every step is a tap of cmd+= or cmd+-, by which applications zoom.
    struct Zoom {               // "zoom"
        std::int64_t steps = 0; ///< -8 to 8, but not 0: positive enlarges, negative makes smaller
        bool operator==(const Zoom&) const = default;
    };

    /// Presses or releases a mouse button where the pointer is (`HeldButtons`, `ClickCounter`).
    struct Button { // "button"
        bool right = false;
        bool down = false;
        bool operator==(const Button&) const = default;
    };

    /// Types a text. Unlike the text of a `TypeTextRequest`, it may contain control characters and
    /// be longer: `TypeTextRequest::ofText` turns it into requests that may be typed.
    struct Text {           // "text"
        std::string text;   ///< 1 to 1024 UTF-16 units
        std::string target; ///< 1 to 16 digits without a leading zero
        bool operator==(const Text&) const = default;
    };

    /// Taps a key. As with a text, the host first asks `FocusTracker::accepts` about the target,
    /// because a Return or a Backspace does harm too if the focus has moved elsewhere. `hotkeyOf`
    /// returns the key.
    struct Key {            // "key"
        std::string name;   ///< one of `keys`, which are not the names of `Hotkey::keys`
        std::string target; ///< as in `Text`
        bool operator==(const Key&) const = default;
    };

    /// Shows that the phone is still there. When the pings stay away or the connection ends, the
    /// host releases everything, as after a `Release`.
    struct Ping { // "ping"
        bool operator==(const Ping&) const = default;
    };

    /// Asks the host to release every button and key that the phone holds: `HeldButtons::takeAll`
    /// and `HotkeyPlan::releases` without names.
    struct Release { // "release"
        bool operator==(const Release&) const = default;
    };

    /// Asks for a focus event, even if the focus is the one that the phone was told last: the host
    /// sets `FocusTracker::requested` and observes the focus.
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

    /// Returns the message of a line, or nothing if the line is not one whole message within the
    /// limits above. Every number must be an integer and every flag a boolean.
    static std::optional<InputMessage> decode(std::string_view line);

    bool operator==(const InputMessage&) const = default;
};

} // namespace velmo
