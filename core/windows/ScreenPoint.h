#pragma once

namespace velmo {

/// A place on the screen, in points.
struct ScreenPoint {
    double x = 0;
    double y = 0;

    bool operator==(const ScreenPoint&) const = default;
};

} // namespace velmo
