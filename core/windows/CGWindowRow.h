#pragma once

#include "core/support/Value.h"
#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// A window as the platform lists it (CGWindowListCopyWindowInfo).
struct CGWindowRow {
    std::uint32_t id = 0; ///< window number
    std::int32_t pid = 0; ///< of the owner
    std::string owner;    ///< the owner's name; empty when it is missing
    std::optional<std::string> title;
    std::int64_t layer = 0; ///< 0: ordinary windows; others: menus, panels, overlays, the desktop
    double alpha = 1;       ///< 0...1; may be "not a number", which counts as invisible
    WindowBounds bounds;    ///< finite
    bool onScreen = false;

    /// Reads an entry of the list. Absent without a window number of 1...2^32-1, a process
    /// identifier of 1...2^31-1 and four finite bounds, none of which may be a boolean. Anything
    /// else that is missing, or of another kind, is its default. An empty title is none.
    static std::optional<CGWindowRow> parse(const Value& entry);

    static constexpr auto fields = std::tuple{
        field("id", &CGWindowRow::id),         field("pid", &CGWindowRow::pid),
        field("owner", &CGWindowRow::owner),   field("title", &CGWindowRow::title),
        field("layer", &CGWindowRow::layer),   field("alpha", &CGWindowRow::alpha),
        field("bounds", &CGWindowRow::bounds), field("onScreen", &CGWindowRow::onScreen)};
    bool operator==(const CGWindowRow&) const = default;
};

} // namespace velmo
