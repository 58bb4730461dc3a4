#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// The window that the phone asked for, as the window list knows it.
struct WindowTarget {
    std::uint32_t id = 0; ///< window number
    std::optional<std::string> title;
    std::optional<WindowBounds> bounds;
    bool onScreen = false; ///< otherwise minimized, or in another space

    static constexpr auto fields = std::tuple{
        field("id", &WindowTarget::id), field("title", &WindowTarget::title),
        field("bounds", &WindowTarget::bounds), field("onScreen", &WindowTarget::onScreen)};
    bool operator==(const WindowTarget&) const = default;
};

} // namespace velmo
