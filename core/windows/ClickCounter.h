#pragma once

#include "core/windows/ScreenPoint.h"

#include <cstdint>
#include <optional>

namespace velmo {

/// Counts presses of a mouse button that follow each other closely: single, double, triple.
struct ClickCounter {
    struct Press {
        bool right = false; ///< which button
        ScreenPoint at;
        double time = 0;        ///< seconds
        std::int64_t count = 1; ///< its place in the row of presses, without an upper limit

        bool operator==(const Press&) const = default;
    };

    double interval = 0; ///< seconds; the longest time between two presses that count together
    double slop = 0;     ///< points; the longest way between them, along each axis
    std::optional<Press> last;

    /// The count of this press: one more than that of the last one if it is of the same button and
    /// close in time and place, limits included; else 1. A clock that runs backwards is close.
    std::int64_t press(bool right, const ScreenPoint& at, double time);

    bool operator==(const ClickCounter&) const = default;
};

} // namespace velmo
