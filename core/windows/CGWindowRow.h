#pragma once

#include "core/support/Value.h"
#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Describes a window as the platform's window list does (CGWindowListCopyWindowInfo).
struct CGWindowRow {
    std::uint32_t id = 0;             ///< window number
    std::int32_t pid = 0;             ///< of the owner
    std::string owner;                ///< name of the owner; empty if it is missing
    std::optional<std::string> title; ///< absent if it is missing or empty
    std::int64_t layer = 0;           ///< 0 for ordinary windows; menus, overlays and others differ
    double alpha = 1;                 ///< opacity, 0...1; may be "not a number"
    WindowBounds bounds;              ///< all four are finite
    bool onScreen = false;

    /// Reads an entry of the window list. Returns nothing unless it has a window number of
    /// 1...2^32-1, a process identifier of 1...2^31-1 and four finite numbers as bounds; booleans
    /// do not count as numbers here. Any other member keeps its default if it is missing or of
    /// another kind.
    static std::optional<CGWindowRow> parse(const Value& entry);

    static constexpr auto fields = std::tuple{
        field("id", &CGWindowRow::id),         field("pid", &CGWindowRow::pid),
        field("owner", &CGWindowRow::owner),   field("title", &CGWindowRow::title),
        field("layer", &CGWindowRow::layer),   field("alpha", &CGWindowRow::alpha),
        field("bounds", &CGWindowRow::bounds), field("onScreen", &CGWindowRow::onScreen)};
    bool operator==(const CGWindowRow&) const = default;
};

} // namespace velmo
