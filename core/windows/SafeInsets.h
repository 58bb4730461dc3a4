#pragma once

#include "core/support/Record.h"

namespace velmo {

/// Tells how far windows should stay from each edge of a display, in points.
struct SafeInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;

    static constexpr auto fields =
        std::tuple{field("top", &SafeInsets::top), field("left", &SafeInsets::left),
                   field("bottom", &SafeInsets::bottom), field("right", &SafeInsets::right)};
    bool operator==(const SafeInsets&) const = default;
};

} // namespace velmo
