#include "core/input/GestureDebounce.h"
#include "core/input/GesturePlan.h"
#include "tests/Texts.h"

#include <algorithm>
#include <cmath>

namespace velmo {
namespace {

using Dictionary = Value::Dictionary;

const std::string missionControlApp = "/System/Applications/Mission Control.app";
const std::string launchpadApp = "/System/Applications/Launchpad.app";
const std::string appsApp = "/System/Applications/Apps.app";

GesturePlan::Exists diskWith(const Strings& applications) {
    return [applications](std::string_view path) {
        EXPECT_NE(path, "/Applications");
        return std::ranges::find(applications, path) != applications.end();
    };
}

const GesturePlan::Exists emptyDisk = diskWith({});
const GesturePlan::Exists fullDisk = diskWith({missionControlApp, launchpadApp, appsApp});

const Value off = Dictionary{{"enabled", false}};

/// A shortcut by which it can be recognised.
Value shortcutWith(int keyCode) {
    return Dictionary{
        {"enabled", true},
        {"value",
         Dictionary{{"type", "standard"}, {"parameters", Value::Array{65535, keyCode, 0x100000}}}}};
}

GestureAction hotKey(std::uint16_t code) {
    return HotKey{code, 0x100000};
}

TEST(GesturePlan, PrefersTheShortcutThenTheApplication) {
    struct Case {
        Gesture gesture;
        std::string shortcut; ///< its number in the preferences
        GestureAction otherwise;
        GestureAction lastResort;
        GestureAction unchanged; ///< the system's own shortcut, without preferences
    };

    const NoAction no;
    const PressClockAction clock;
    const Case cases[] = {
        {Gesture::missionControl, "32", OpenAction{missionControlApp, {}}, no,
         HotKey{126, 0xA40000}},
        {Gesture::appWindows, "33", OpenAction{missionControlApp, {"2"}}, no,
         HotKey{125, 0xA40000}},
        {Gesture::spaceNext, "81", no, no, HotKey{124, 0xA40000}},
        {Gesture::spacePrevious, "79", no, no, HotKey{123, 0xA40000}},
        {Gesture::showDesktop, "36", OpenAction{missionControlApp, {"1"}}, no,
         HotKey{103, 0x800000}},
        {Gesture::lookUp, "70", no, no, no},
        {Gesture::notificationCenter, "163", clock, clock, clock},
    };
    for (const auto& [gesture, number, otherwise, lastResort, unchanged] : cases) {
        const Dictionary on{{number, shortcutWith(5)}};
        const Dictionary disabled{{number, off}};
        EXPECT_EQ(GesturePlan::action(gesture, &on, fullDisk), hotKey(5)) << number;
        EXPECT_EQ(GesturePlan::action(gesture, &disabled, fullDisk), otherwise) << number;
        EXPECT_EQ(GesturePlan::action(gesture, &disabled, emptyDisk), lastResort) << number;
        EXPECT_EQ(GesturePlan::action(gesture, nullptr, emptyDisk), unchanged) << number;
    }
}

TEST(GesturePlan, AppsPrefersTheApplicationThenTheShortcuts) {
    const Dictionary both{{"160", shortcutWith(6)}, {"64", shortcutWith(7)}};
    const Dictionary second{{"160", off}, {"64", shortcutWith(7)}};
    const Dictionary none{{"64", off}};
    const auto apps = [](const Dictionary* hotKeys, const GesturePlan::Exists& exists) {
        return GesturePlan::action(Gesture::apps, hotKeys, exists);
    };
    EXPECT_EQ(apps(&both, fullDisk), GestureAction(OpenAction{appsApp, {}}));
    EXPECT_EQ(apps(&both, diskWith({missionControlApp, launchpadApp})),
              GestureAction(OpenAction{launchpadApp, {}}));
    EXPECT_EQ(apps(&both, diskWith({missionControlApp})), hotKey(6));
    EXPECT_EQ(apps(&second, emptyDisk), hotKey(7));
    EXPECT_EQ(apps(&none, emptyDisk), GestureAction(OpenAction{"/Applications", {}}));
    EXPECT_EQ(apps(nullptr, emptyDisk), hotKey(49));
}

TEST(GestureDebounce, DropsGesturesThatComeTooFast) {
    const std::pair<double, bool> calls[] = {{std::nan(""), false}, {-1000, true},   {100, true},
                                             {100.1, false},        {100.49, false}, {100.5, true},
                                             {100.75, false},       {90, false},     {101, true},
                                             {std::nan(""), false}, {HUGE_VAL, true}};
    GestureDebounce debounce{.interval = 0.5};
    for (const auto& [now, accepted] : calls)
        EXPECT_EQ(debounce.accept(now), accepted) << now;
}

} // namespace
} // namespace velmo
