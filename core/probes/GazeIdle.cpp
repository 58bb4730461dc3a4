#include "core/probes/GazeIdle.h"

#include <algorithm>
#include <cmath>

namespace velmo {

namespace {

constexpr double maxIdle = 86400; ///< seconds: a day
constexpr double millisecondsInASecond = 1000;

} // namespace

GazeIdle::GazeIdle(double secondsSinceKey, double secondsSincePointer, bool isLocked, bool isAsleep)
    : key(clean(secondsSinceKey)),
      pointer(clean(secondsSincePointer)),
      locked(isLocked),
      asleep(isAsleep) {
}

double GazeIdle::clean(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0)
        return maxIdle;
    // The seconds are limited before they are multiplied, because the product could be infinite.
    const double milliseconds = std::min(seconds, maxIdle) * millisecondsInASecond;
    return std::round(milliseconds) / millisecondsInASecond;
}

} // namespace velmo
