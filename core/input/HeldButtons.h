#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace velmo {

/// The mouse buttons that one phone has pressed and not released yet. The object is kept, beside
/// the phone's `HeldKeys`, from one message to the next, so that moves are drags while a button is
/// down, a release has the click count of its press, and the end of the connection leaves no button
/// down. The object itself posts no events.
class HeldButtons {
public:
    struct Press {
        bool right = false;     ///< the right button, not the left one
        std::int64_t count = 1; ///< from `ClickCounter::press`; the click state of all its events

        bool operator==(const Press&) const = default;
    };

    [[nodiscard]] bool isEmpty() const { return presses_.empty(); }

    /// Tells whether the button is down. A further press of that button is then a repetition: the
    /// caller posts nothing and does not ask `ClickCounter`, which would count one click too many.
    [[nodiscard]] bool isDown(bool right) const;

    /// Records a press as the most recent one. A button that is down already stays as it is.
    void pressed(Press press);

    /// Removes and returns the press of a button, to be released with its count. Absent if the
    /// button is not down: the caller then posts nothing, because applications take a lone release
    /// for a click.
    std::optional<Press> take(bool right);

    /// Removes and returns all presses, the most recent one first.
    std::vector<Press> takeAll();

    /// Returns the press that a move drags with: that of the left button if both are down, as with
    /// a mouse. Absent if no button is down, so that the pointer only moves.
    [[nodiscard]] std::optional<Press> dragged() const;

    bool operator==(const HeldButtons&) const = default;

private:
    std::vector<Press> presses_; ///< of each button at most one, oldest first
};

} // namespace velmo
