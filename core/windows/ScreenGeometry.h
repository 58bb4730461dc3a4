#pragma once

#include "core/windows/WindowBounds.h"

/// The platform counts y downwards from the top of the primary display in its window list and in
/// accessibility, but upwards from its bottom where it tells of displays.
namespace velmo::ScreenGeometry {

/// A rectangle by its bottom left corner, y growing upwards from the bottom of the primary display,
/// in points. A type of its own, so that it can't be taken for a `WindowBounds`.
struct BottomLeftRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

constexpr WindowBounds topLeft(const BottomLeftRect& rect, double primaryHeight) {
    return {.x = rect.x,
            .y = primaryHeight - (rect.y + rect.height),
            .width = rect.width,
            .height = rect.height};
}

} // namespace velmo::ScreenGeometry
