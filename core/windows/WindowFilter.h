#pragma once

#include "core/windows/CGWindowRow.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// Decides which windows are listed for the phone at all. `WindowPrivacy` decides whether their
/// content may be shown: windows of password managers are listed too.
namespace velmo::WindowFilter {

/// Names of owners of windows that are never listed.
inline constexpr auto systemOwners = std::to_array<std::string_view>({
    "Window Server",
    "Dock",
    "SystemUIServer",
    "Control Center",
    "Notification Center",
    "NotificationCenter",
    "Spotlight",
    "WindowManager",
    "Wallpaper",
    "loginwindow",
    "screencaptureui",
    "TextInputMenuAgent",
    "TextInputSwitcher",
    "AXVisualSupportAgent",
});

/// Tells whether the row is an ordinary, visible window of at least 60 by 60 points, and its owner
/// a regular application (one with an icon in the Dock) that is neither this process nor another
/// application of the product. `bundleId` is the owner's; absent if it has none.
bool keep(const CGWindowRow& row, std::int32_t ownPid, std::optional<std::string_view> bundleId,
          bool isRegularApp);

} // namespace velmo::WindowFilter
