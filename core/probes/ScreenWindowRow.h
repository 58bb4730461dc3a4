#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Describes a window on the screen. Lists of rows are in the window server's order, from front to
/// back.
struct ScreenWindowRow {
    std::uint32_t id = 0;                ///< window number
    std::int32_t pid = 0;                ///< of the owner
    std::optional<std::string> bundleId; ///< of the owner; absent if it has none
    std::optional<std::string> title;
    WindowBounds bounds;
    double alpha = 1;              ///< opacity, 0...1
    std::int64_t sharingState = 0; ///< 0: not shared, other processes can't capture it

    static constexpr auto fields =
        std::tuple{field("id", &ScreenWindowRow::id),
                   field("pid", &ScreenWindowRow::pid),
                   field("bundleId", &ScreenWindowRow::bundleId),
                   field("title", &ScreenWindowRow::title),
                   field("bounds", &ScreenWindowRow::bounds),
                   field("alpha", &ScreenWindowRow::alpha),
                   field("sharingState", &ScreenWindowRow::sharingState)};
    bool operator==(const ScreenWindowRow&) const = default;
};

} // namespace velmo
