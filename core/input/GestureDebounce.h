#pragma once

#include <limits>

namespace velmo {

/// Drops gestures that follow each other too fast.
struct GestureDebounce {
    double interval = 0;                                    ///< seconds; 0.5 is usual
    double last = -std::numeric_limits<double>::infinity(); ///< seconds, of the last accepted one

    /// Tells whether the interval has passed since the last accepted gesture, and remembers `now`,
    /// in seconds, if it has. A refused gesture does not start the interval again. Times before the
    /// last accepted one are refused.
    [[nodiscard]] bool accept(double now) {
        // The comparison is negated so that "not a number" is refused.
        if (!(now - last >= interval))
            return false;
        last = now;
        return true;
    }

    bool operator==(const GestureDebounce&) const = default;
};

} // namespace velmo
