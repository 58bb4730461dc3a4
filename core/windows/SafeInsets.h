#pragma once

#include "core/support/Record.h"

namespace velmo {

/// Tells how far from each edge of a display its shape may cover what is shown, in points: windows
/// keep clear of these parts. `DisplayRecord::safe` says what they are measured from.
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
