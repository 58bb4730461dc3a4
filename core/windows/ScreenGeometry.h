#pragma once

#include "core/windows/WindowBounds.h"

/// Converts the coordinates of displays into those of windows. The platform counts y downwards from
/// the top of the primary display in its window list and in accessibility, but upwards from the
/// bottom of the primary display when it describes displays.
namespace velmo::ScreenGeometry {

/// A rectangle by its bottom left corner, in points; y grows upwards from the bottom of the primary
/// display. The type is distinct from `WindowBounds`, so that passing one by mistake does not
/// compile.
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
