#pragma once

#include "core/windows/SafeInsets.h"
#include "core/windows/WindowBounds.h"

#include <string>

namespace velmo {

/// Describes a display of the host to the phone.
struct DisplayRecord {
    std::string id;
    std::string name;
    WindowBounds frame;   ///< of the whole display
    WindowBounds work;    ///< of the part without menu bar and Dock
    double scale = 1;     ///< pixels per point
    bool primary = false; ///< the display with the menu bar
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
