#pragma once

#include "core/windows/CGWindowRow.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// Which windows the phone hears of at all. What may be shown of them is for `WindowPrivacy` to
/// say: windows of password managers are listed.
namespace velmo::WindowFilter {

/// Owners that never have a window of interest, by their names.
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

/// Whether the row is an ordinary, visible window of at least 60 by 60 points that belongs neither
/// to this process nor to the product, but to a regular application: one with an icon in the Dock.
/// `bundleId` is the owner's; absent when it has none.
bool keep(const CGWindowRow& row, std::int32_t ownPid, std::optional<std::string_view> bundleId,
          bool isRegularApp);

} // namespace velmo::WindowFilter
