#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace velmo {

/// The mouse buttons that one phone has pressed and not released yet, beside its `HeldKeys`. It is
/// kept from one message to the next, so that moves are drags while a button is down, a release has
/// the click count of its press, and the end of the connection leaves no button down. It posts no
/// events itself.
class HeldButtons {
public:
    struct Press {
        bool right = false;     ///< the right button, not the left one
        std::int64_t count = 1; ///< from `ClickCounter::press`; the click state of all its events

        bool operator==(const Press&) const = default;
    };

    [[nodiscard]] bool isEmpty() const { return presses_.empty(); }

    /// Tells whether the button is down. A press of it is a repetition then: nothing is posted, and
    /// `ClickCounter` is not asked, for which it would be a click more.
    [[nodiscard]] bool isDown(bool right) const;

    /// Records a press as the most recent one. A button that is down already stays as it is.
    void pressed(Press press);

    /// Removes and returns the press of a button, to be released with its count. Absent if it was
    /// never pressed: nothing is posted then, as applications take a lone release for a click.
    std::optional<Press> take(bool right);

    /// Removes and returns all presses, the most recent one first.
    std::vector<Press> takeAll();

    /// Returns the press that a move drags with, which is that of the left button if both are down,
    /// as with a mouse; absent if none is, so that the pointer only moves.
    [[nodiscard]] std::optional<Press> dragged() const;

    bool operator==(const HeldButtons&) const = default;

private:
    std::vector<Press> presses_; ///< of each button at most one, oldest first
};

} // namespace velmo
