#pragma once

#include "core/input/Gesture.h"
#include "core/input/GestureAction.h"
#include "core/support/Value.h"

#include <array>
#include <functional>
#include <string_view>

/// Decides how a gesture is carried out: by the shortcut that the user's preferences assign to it,
/// else by an application, else as the gesture's last resort says. Only `apps` prefers the
/// application.
namespace velmo::GesturePlan {

inline constexpr auto missionControlApps =
    std::to_array<std::string_view>({"/System/Applications/Mission Control.app"});
inline constexpr auto launchpadApps =
    std::to_array<std::string_view>({"/System/Applications/Launchpad.app"});
inline constexpr auto appsApps = std::to_array<std::string_view>({"/System/Applications/Apps.app"});

/// Whether anything is at a path.
using Exists = std::function<bool(std::string_view path)>;

/// `hotKeys` is the dictionary that `SymbolicHotKeys::resolve` reads; null when there is none.
GestureAction action(Gesture gesture, const Value::Dictionary* hotKeys, const Exists& exists);

} // namespace velmo::GesturePlan
