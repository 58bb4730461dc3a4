#pragma once

#include "core/support/Record.h"

namespace velmo {

/// Tells the phone which frame a window ended with, in the coordinates of `WindowBounds`.
struct FrameRecord {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool resized = false; ///< whether its size was changed

    static constexpr auto fields =
        std::tuple{field("x", &FrameRecord::x), field("y", &FrameRecord::y),
                   field("width", &FrameRecord::width), field("height", &FrameRecord::height),
                   field("resized", &FrameRecord::resized)};
    bool operator==(const FrameRecord&) const = default;
};

} // namespace velmo
