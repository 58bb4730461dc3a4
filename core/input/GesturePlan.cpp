#include "core/input/GesturePlan.h"

#include "core/input/SymbolicHotKeys.h"

#include <algorithm>
#include <optional>
#include <span>

namespace velmo::GesturePlan {

namespace {

using Arguments = std::vector<std::string>;

namespace Number = SymbolicHotKeys::Number;

/// With one of these arguments Mission Control shows something other than all windows.
constexpr std::string_view desktopArgument = "1";
constexpr std::string_view appWindowsArgument = "2";

constexpr std::string_view applicationsFolder = "/Applications";

std::optional<GestureAction> shortcut(int number, const Value::Dictionary* hotKeys) {
    return SymbolicHotKeys::resolve(number, hotKeys)
        .transform([](const SymbolicHotKeys::HotKey& hotKey) { return GestureAction(hotKey); });
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
        return shortcutOrMissionControl(Number::missionControl, {});
    case Gesture::appWindows:
        return shortcutOrMissionControl(Number::appWindows, {std::string(appWindowsArgument)});
    case Gesture::showDesktop:
        return shortcutOrMissionControl(Number::showDesktop, {std::string(desktopArgument)});
    case Gesture::spaceNext:
        return shortcutOr(Number::spaceNext, NoAction());
    case Gesture::spacePrevious:
        return shortcutOr(Number::spacePrevious, NoAction());
    case Gesture::lookUp:
        return shortcutOr(Number::lookUp, NoAction());
    case Gesture::notificationCenter:
        return shortcutOr(Number::notificationCenter, PressClockAction());
    case Gesture::apps:
        return application(appsApps, exists)
            .or_else([&] { return application(launchpadApps, exists); })
            .or_else([&] { return shortcut(Number::apps, hotKeys); })
            .or_else([&] { return shortcut(Number::search, hotKeys); })
            .value_or(OpenAction{.path = std::string(applicationsFolder), .arguments = {}});
    }
    return NoAction();
}

} // namespace velmo::GesturePlan
