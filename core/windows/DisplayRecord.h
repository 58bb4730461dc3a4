#pragma once

#include "core/windows/SafeInsets.h"
#include "core/windows/WindowBounds.h"

#include <string>

namespace velmo {

/// Describes a display of the host to the phone. Rectangles are in the coordinates of
/// `WindowBounds`; on a Mac `ScreenGeometry::topLeft` makes them of what NSScreen tells. The user's
/// settings change `work`, so a host reads it again before each use.
///
/// Windows go into `work`. Before it is divided among several, `ArrangePolicy::mayArrange` tells
/// which of them can take a part.
struct DisplayRecord {
    std::string id;
    std::string name;
    WindowBounds frame; ///< of the whole display; on a Mac NSScreen.frame

    /// The part for windows: without menu bar and Dock and, on a display with a notch, without the
    /// strip on both sides of it, even while the menu bar is hidden. On a Mac
    /// NSScreen.visibleFrame.
    WindowBounds work;

    double scale = 1;     ///< pixels per point
    bool primary = false; ///< the display with the menu bar

    /// What the display's own shape covers, such as the strip of a notch at the top, measured from
    /// the edges of `frame`. On a Mac NSScreen.safeAreaInsets; an inset is 0 where nothing is
    /// covered. Only what fills the whole display, over menu bar and Dock, keeps clear of it.
    /// `work` lies within already: insets that are taken off `work` leave the strip out twice.
    SafeInsets safe;

    bool builtin = false; ///< the computer's own panel

    static constexpr auto fields = std::tuple{
        field("id", &DisplayRecord::id),       field("name", &DisplayRecord::name),
        field("frame", &DisplayRecord::frame), field("work", &DisplayRecord::work),
        field("scale", &DisplayRecord::scale), field("primary", &DisplayRecord::primary),
        field("safe", &DisplayRecord::safe),   field("builtin", &DisplayRecord::builtin)};
    bool operator==(const DisplayRecord&) const = default;
};

} // namespace velmo
