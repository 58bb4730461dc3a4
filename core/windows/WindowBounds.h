#pragma once

#include "core/support/Record.h"
#include "core/windows/ScreenPoint.h"

namespace velmo {

/// A rectangle on the screen, in points. The origin is the top left corner of the primary display
/// and y grows downwards, as in the platform's window list.
struct WindowBounds {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    /// Returns the sum of the absolute differences of the four numbers.
    [[nodiscard]] double distance(const WindowBounds& other) const;

    /// Tells whether the point lies in the rectangle. The left and top edges belong to it, the
    /// right and bottom ones do not. A negative size extends to the left or upwards. An empty
    /// rectangle, or one with a number that is not finite, contains nothing.
    [[nodiscard]] bool contains(const ScreenPoint& point) const;

    static constexpr auto fields =
        std::tuple{field("x", &WindowBounds::x), field("y", &WindowBounds::y),
                   field("width", &WindowBounds::width), field("height", &WindowBounds::height)};
    bool operator==(const WindowBounds&) const = default;
};

} // namespace velmo
