#pragma once

#include "core/windows/ScreenPoint.h"

#include <cstdint>
#include <optional>

namespace velmo {

/// Counts presses of a mouse button that follow each other closely: single, double, triple click.
/// The requests to click and to move the pointer are in core/input/MouseClickRequest.h and
/// core/probes/PointerTarget.h.
struct ClickCounter {
    struct Press {
        bool right = false; ///< the right button, not the left one
        ScreenPoint at;
        double time = 0;        ///< seconds
        std::int64_t count = 1; ///< 1 for a single click, 2 for a double one, and so on

        bool operator==(const Press&) const = default;
    };

    /// Seconds; limit of the time between two presses of a series. On a Mac the user's own limit is
    /// NSEvent.doubleClickInterval, which is 0.5 unless the user changed it.
    double interval = 0;
    double slop = 0; ///< points; limit of their distance along each axis; 4 is usual
    std::optional<Press> last;

    /// Returns the count of this press, which is the click state of its event and of the events
    /// that follow until the button is up again. The count is one more than that of the last press
    /// if both are of the same button and within `interval` and `slop`, limits included, and
    /// otherwise 1. A press with a time before that of the last press counts as close in time.
    std::int64_t press(bool right, const ScreenPoint& at, double time);

    bool operator==(const ClickCounter&) const = default;
};

} // namespace velmo
