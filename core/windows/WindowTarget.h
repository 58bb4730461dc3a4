#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Describes the window that the phone asked for as the window list does.
struct WindowTarget {
    std::uint32_t id = 0; ///< window number
    std::optional<std::string> title;
    std::optional<WindowBounds> bounds;
    bool onScreen = false; ///< false: minimized, or in another space

    static constexpr auto fields = std::tuple{
        field("id", &WindowTarget::id), field("title", &WindowTarget::title),
        field("bounds", &WindowTarget::bounds), field("onScreen", &WindowTarget::onScreen)};
    bool operator==(const WindowTarget&) const = default;
};

} // namespace velmo
