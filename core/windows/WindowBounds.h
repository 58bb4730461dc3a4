#pragma once

#include "core/support/Record.h"
#include "core/windows/ScreenPoint.h"

namespace velmo {

/// A rectangle on the screen, in points. The origin of the screen is the top left corner of the
/// primary display and y grows downwards, as in the platform's window list.
struct WindowBounds {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    /// The sum of the absolute differences of the four numbers.
    [[nodiscard]] double distance(const WindowBounds& other) const;

    /// Left and top edges belong to the rectangle, right and bottom ones to its neighbours. A
    /// negative size extends to the left or upwards; an empty rectangle, or one with a number that
    /// is not finite, contains nothing.
    [[nodiscard]] bool contains(const ScreenPoint& point) const;

    static constexpr auto fields =
        std::tuple{field("x", &WindowBounds::x), field("y", &WindowBounds::y),
                   field("width", &WindowBounds::width), field("height", &WindowBounds::height)};
    bool operator==(const WindowBounds&) const = default;
};

} // namespace velmo
