#pragma once

#include <limits>

namespace velmo {

/// Drops gestures that follow each other too fast.
struct GestureDebounce {
    double interval = 0;                                    ///< seconds
    double last = -std::numeric_limits<double>::infinity(); ///< seconds; the last one accepted

    /// Whether the interval has passed since the last gesture that was accepted; one that is
    /// refused does not start it again. While a clock runs backwards everything is refused.
    [[nodiscard]] bool accept(double now) {
        // Written so that "not a number" is refused.
        if (!(now - last >= interval))
            return false;
        last = now;
        return true;
    }

    bool operator==(const GestureDebounce&) const = default;
};

} // namespace velmo
