#include "core/input/GesturePlan.h"

#include "core/input/SymbolicHotKeys.h"

#include <algorithm>
#include <optional>
#include <span>

namespace velmo::GesturePlan {

namespace {

using Arguments = std::vector<std::string>;

/// The numbers under which the preferences keep the shortcuts.
namespace Shortcut {
constexpr int missionControl = 32;
constexpr int appWindows = 33;
constexpr int showDesktop = 36;
constexpr int search = 64;
constexpr int lookUp = 70;
constexpr int spacePrevious = 79;
constexpr int spaceNext = 81;
constexpr int apps = 160;
constexpr int notificationCenter = 163;
} // namespace Shortcut

/// Arguments that make Mission Control show something else than all windows.
constexpr std::string_view desktopArgument = "1";
constexpr std::string_view appWindowsArgument = "2";

constexpr std::string_view applicationsFolder = "/Applications";

std::optional<GestureAction> shortcut(int number, const Value::Dictionary* hotKeys) {
    return SymbolicHotKeys::resolve(number, hotKeys).transform([](const HotKey& hotKey) {
        return GestureAction(hotKey);
    });
}

std::optional<GestureAction> application(std::span<const std::string_view> paths,
                                         const Exists& exists, const Arguments& arguments = {}) {
    const auto found = std::ranges::find_if(paths, exists);
    if (found == paths.end())
        return std::nullopt;
    return OpenAction{.path = std::string(*found), .arguments = arguments};
}

} // namespace

GestureAction action(Gesture gesture, const Value::Dictionary* hotKeys, const Exists& exists) {
    const auto shortcutOr = [&](int number, const GestureAction& otherwise) {
        return shortcut(number, hotKeys).value_or(otherwise);
    };
    const auto shortcutOrMissionControl = [&](int number, const Arguments& arguments) {
        return shortcut(number, hotKeys)
            .or_else([&] { return application(missionControlApps, exists, arguments); })
            .value_or(NoAction());
    };

    switch (gesture) {
    case Gesture::missionControl:
        return shortcutOrMissionControl(Shortcut::missionControl, {});
    case Gesture::appWindows:
        return shortcutOrMissionControl(Shortcut::appWindows, {std::string(appWindowsArgument)});
    case Gesture::showDesktop:
        return shortcutOrMissionControl(Shortcut::showDesktop, {std::string(desktopArgument)});
    case Gesture::spaceNext:
        return shortcutOr(Shortcut::spaceNext, NoAction());
    case Gesture::spacePrevious:
        return shortcutOr(Shortcut::spacePrevious, NoAction());
    case Gesture::lookUp:
        return shortcutOr(Shortcut::lookUp, NoAction());
    case Gesture::notificationCenter:
        return shortcutOr(Shortcut::notificationCenter, PressClockAction());
    case Gesture::apps:
        return application(appsApps, exists)
            .or_else([&] { return application(launchpadApps, exists); })
            .or_else([&] { return shortcut(Shortcut::apps, hotKeys); })
            .or_else([&] { return shortcut(Shortcut::search, hotKeys); })
            .value_or(OpenAction{.path = std::string(applicationsFolder), .arguments = {}});
    }
    return NoAction();
}

} // namespace velmo::GesturePlan
