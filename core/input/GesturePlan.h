#pragma once

#include "core/input/Gesture.h"
#include "core/input/GestureAction.h"
#include "core/support/Value.h"

#include <array>
#include <functional>
#include <string_view>

/// Decides how a gesture is carried out. The first choice is the keyboard shortcut of the function
/// that the gesture asks for, as `SymbolicHotKeys::resolve` finds it. Without a shortcut an
/// application is opened, and if that is not installed, the gesture's last resort is taken.
///
/// | gesture                          | application                 | last resort            |
/// |----------------------------------|-----------------------------|------------------------|
/// | missionControl                   | `missionControlApps`        | nothing                |
/// | appWindows, showDesktop          | the same, with an argument  | nothing                |
/// | spaceNext, spacePrevious, lookUp |                             | nothing                |
/// | notificationCenter               |                             | the clock is clicked   |
/// | apps                             | `appsApps`, `launchpadApps` | "/Applications" opened |
///
/// Only `apps` prefers the applications to shortcuts, and has two of these: its own, then search.
namespace velmo::GesturePlan {

inline constexpr auto missionControlApps =
    std::to_array<std::string_view>({"/System/Applications/Mission Control.app"});
inline constexpr auto launchpadApps =
    std::to_array<std::string_view>({"/System/Applications/Launchpad.app"});
inline constexpr auto appsApps = std::to_array<std::string_view>({"/System/Applications/Apps.app"});

/// Tells whether anything is at a path.
using Exists = std::function<bool(std::string_view path)>;

/// Returns how to carry the gesture out. `hotKeys` are the user's shortcut preferences, or null if
/// they are missing.
GestureAction action(Gesture gesture, const Value::Dictionary* hotKeys, const Exists& exists);

} // namespace velmo::GesturePlan
