#pragma once

#include "core/support/Record.h"

namespace velmo {

/// Reports whether a person is at the Mac: how long its input devices have been idle, and whether
/// the screen can be seen at all.
struct GazeIdle {
    double key;     ///< seconds since the last keyboard event
    double pointer; ///< seconds since the last pointer event
    bool locked;    ///< the screen is locked
    bool asleep;    ///< the display sleeps

    /// Both times pass through `clean`.
    GazeIdle(double secondsSinceKey, double secondsSincePointer, bool isLocked, bool isAsleep);

    /// Rounds an idle time to whole milliseconds, half a millisecond up, and limits it to a day. A
    /// negative, infinite or "not a number" time becomes a day, which means that no activity is
    /// known.
    static double clean(double seconds);

    static constexpr auto fields =
        std::tuple{field("key", &GazeIdle::key), field("pointer", &GazeIdle::pointer),
                   field("locked", &GazeIdle::locked), field("asleep", &GazeIdle::asleep)};
    bool operator==(const GazeIdle&) const = default;
};

} // namespace velmo
