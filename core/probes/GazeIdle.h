#pragma once

#include "core/support/Record.h"

namespace velmo {

/// Whether somebody is at the Mac: for how long its input devices were left alone, and whether the
/// screen could be seen at all.
struct GazeIdle {
    double key;     ///< seconds since the last keyboard event
    double pointer; ///< seconds since the last pointer event
    bool locked;    ///< the screen is locked
    bool asleep;    ///< the display sleeps

    /// Both times pass through `clean`.
    GazeIdle(double secondsSinceKey, double secondsSincePointer, bool isLocked, bool isAsleep);

    /// Whole milliseconds, half of one rounded up, of at most a day. A day too for what is no
    /// duration (negative, infinite, not a number): no activity is known.
    static double clean(double seconds);

    static constexpr auto fields =
        std::tuple{field("key", &GazeIdle::key), field("pointer", &GazeIdle::pointer),
                   field("locked", &GazeIdle::locked), field("asleep", &GazeIdle::asleep)};
    bool operator==(const GazeIdle&) const = default;
};

} // namespace velmo
