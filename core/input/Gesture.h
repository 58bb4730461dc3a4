#pragma once

#include "core/support/RawText.h"

namespace velmo {

/// What a touch gesture on the phone asks of the desktop.
enum class Gesture {
    missionControl,
    appWindows,
    spaceNext,
    spacePrevious,
    showDesktop,
    apps,
    lookUp,
    notificationCenter,
};

template<>
inline constexpr auto rawTexts<Gesture> = std::to_array<std::string_view>(
    {"mission-control", "app-windows", "space-next", "space-previous", "show-desktop", "apps",
     "look-up", "notification-center"});

} // namespace velmo
