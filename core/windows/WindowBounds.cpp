#include "core/windows/WindowBounds.h"

#include <algorithm>
#include <cmath>

namespace velmo {

namespace {

bool liesWithin(double value, double origin, double length) {
    // An origin that is not finite needs no test: both ends are then equal or "not a number".
    const double end = origin + length;
    return std::isfinite(length) && value >= std::min(origin, end) && value < std::max(origin, end);
}

} // namespace

double WindowBounds::distance(const WindowBounds& other) const {
    return std::abs(x - other.x) + std::abs(y - other.y) + std::abs(width - other.width)
           + std::abs(height - other.height);
}

bool WindowBounds::contains(const ScreenPoint& point) const {
    return liesWithin(point.x, x, width) && liesWithin(point.y, y, height);
}

} // namespace velmo
