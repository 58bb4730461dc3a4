#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// What accessibility tells of one window of an application; absent is what it would not say.
struct AXWindowFacts {
    std::optional<std::uint32_t> windowId; ///< the number by which the window list knows it
    std::optional<std::string> title;
    std::optional<WindowBounds> bounds;
    bool minimized = false;

    static constexpr auto fields = std::tuple{
        field("windowId", &AXWindowFacts::windowId), field("title", &AXWindowFacts::title),
        field("bounds", &AXWindowFacts::bounds), field("minimized", &AXWindowFacts::minimized)};
    bool operator==(const AXWindowFacts&) const = default;
};

} // namespace velmo
