#include "core/input/GestureDebounce.h"
#include "core/input/GesturePlan.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using Dictionary = Value::Dictionary;

const std::string missionControlApp = "/System/Applications/Mission Control.app";
const std::string launchpadApp = "/System/Applications/Launchpad.app";
const std::string appsApp = "/System/Applications/Apps.app";

struct Disk {
    bool missionControl = false;
    bool launchpad = false;
    bool apps = false;

    bool operator()(std::string_view path) const {
        EXPECT_NE(path, "/Applications");
        return (path == missionControlApp && missionControl) || (path == launchpadApp && launchpad)
               || (path == appsApp && apps);
    }
};

const Disk emptyDisk;
const Disk fullDisk{true, true, true};

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
    };

    const Case cases[] = {
        {Gesture::missionControl, "32", OpenAction{missionControlApp, {}}, NoAction()},
        {Gesture::appWindows, "33", OpenAction{missionControlApp, {"2"}}, NoAction()},
        {Gesture::spaceNext, "81", NoAction(), NoAction()},
        {Gesture::spacePrevious, "79", NoAction(), NoAction()},
        {Gesture::showDesktop, "36", OpenAction{missionControlApp, {"1"}}, NoAction()},
        {Gesture::lookUp, "70", NoAction(), NoAction()},
        {Gesture::notificationCenter, "163", PressClockAction(), PressClockAction()},
    };
    for (const auto& [gesture, number, otherwise, lastResort] : cases) {
        const Dictionary on{{number, shortcutWith(5)}};
        EXPECT_EQ(GesturePlan::action(gesture, &on, fullDisk), hotKey(5)) << number;
        const Dictionary disabled{{number, off}};
        EXPECT_EQ(GesturePlan::action(gesture, &disabled, fullDisk), otherwise) << number;
        EXPECT_EQ(GesturePlan::action(gesture, &disabled, emptyDisk), lastResort) << number;
    }
}

TEST(GesturePlan, WithoutPreferencesTheSystemsShortcutsCount) {
    const std::pair<Gesture, GestureAction> cases[] = {
        {Gesture::missionControl, HotKey{126, 0xA40000}},
        {Gesture::appWindows, HotKey{125, 0xA40000}},
        {Gesture::spaceNext, HotKey{124, 0xA40000}},
        {Gesture::spacePrevious, HotKey{123, 0xA40000}},
        {Gesture::showDesktop, HotKey{103, 0x800000}},
        {Gesture::lookUp, NoAction()},
        {Gesture::notificationCenter, PressClockAction()},
        {Gesture::apps, HotKey{49, 0x100000}},
    };
    for (const auto& [gesture, action] : cases)
        EXPECT_EQ(GesturePlan::action(gesture, nullptr, emptyDisk), action) << rawText(gesture);
}

TEST(GesturePlan, AppsPrefersTheApplicationThenTheShortcuts) {
    const Dictionary both{{"160", shortcutWith(6)}, {"64", shortcutWith(7)}};
    const Dictionary second{{"160", off}, {"64", shortcutWith(7)}};
    const Dictionary none{{"64", off}};

    struct Case {
        const Dictionary& hotKeys;
        Disk disk;
        GestureAction action;
    };

    const Case cases[] = {
        {both, fullDisk, OpenAction{appsApp, {}}},
        {both, Disk{.missionControl = true, .launchpad = true}, OpenAction{launchpadApp, {}}},
        {both, Disk{.missionControl = true}, hotKey(6)},
        {second, emptyDisk, hotKey(7)},
        {none, emptyDisk, OpenAction{"/Applications", {}}},
    };
    int row = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(GesturePlan::action(Gesture::apps, &c.hotKeys, c.disk), c.action)
            << "row " << row;
        ++row;
    }
}

TEST(GestureDebounce, DropsGesturesThatComeTooFast) {
    struct Call {
        double now;
        bool accepted;
    };

    const Call calls[] = {{std::nan(""), false}, {-1000, true},   {100, true},
                          {100.1, false},        {100.49, false}, {100.5, true},
                          {100.75, false},       {90, false},     {101, true},
                          {std::nan(""), false}, {HUGE_VAL, true}};
    GestureDebounce debounce{.interval = 0.5};
    for (const auto& [now, accepted] : calls)
        EXPECT_EQ(debounce.accept(now), accepted) << now;
}

} // namespace
} // namespace velmo
