#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Describes a window as accessibility reports it. Members that the application does not report are
/// absent.
struct AXWindowFacts {
    std::optional<std::uint32_t> windowId; ///< the window's number in the window list
    std::optional<std::string> title;
    std::optional<WindowBounds> bounds;
    bool minimized = false;

    static constexpr auto fields = std::tuple{
        field("windowId", &AXWindowFacts::windowId), field("title", &AXWindowFacts::title),
        field("bounds", &AXWindowFacts::bounds), field("minimized", &AXWindowFacts::minimized)};
    bool operator==(const AXWindowFacts&) const = default;
};

} // namespace velmo
