#include "core/input/GestureDebounce.h"
#include "core/input/GesturePlan.h"
#include "core/input/Hotkey.h"
#include "tests/Texts.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

namespace velmo {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;
using SymbolicHotKeys::HotKey;

constexpr int missionControl = 32;
constexpr int lookUp = 70;
const HotKey controlUp{.keyCode = 126, .flags = 0xA40000};

Value choice(Value parameters, Value type = "standard") {
    return Dictionary{{"parameters", std::move(parameters)}, {"type", std::move(type)}};
}

/// Returns the entry of a shortcut that can be pressed if the entry counts.
Value entry(Value enabled, Value type = "standard") {
    return Dictionary{{"enabled", std::move(enabled)},
                      {"value", choice(Array{65535, 5, 0x100000}, std::move(type))}};
}

std::optional<HotKey> resolved(int number, Value entry) {
    const Dictionary preferences{{std::to_string(number), std::move(entry)}};
    return SymbolicHotKeys::resolve(number, &preferences);
}

TEST(SymbolicHotKeys, WithoutAReadableEntryTheDefaultCounts) {
    Array entries{"text", Array{}, Dictionary{}, Dictionary{{"enabled", true}}};
    for (const Value& value :
         {Value("text"), choice(Array{65535, 126}, "button"), choice(Array{65535, 126, 262144, 0}),
          choice(Array{65535, "126", 262144}), choice(Array{Value(), 126, 262144}),
          choice(Array{65535, 126, 0x1p63}), choice("65535")})
        entries.emplace_back(Dictionary{{"value", value}});
    for (const Value& entry : entries) {
        SCOPED_TRACE(&entry - entries.data());
        EXPECT_EQ(resolved(missionControl, entry), controlUp);
        EXPECT_FALSE(resolved(lookUp, entry));
    }
    const Dictionary others{{"33", Dictionary{{"enabled", 0}}}, {"032", Dictionary{}}};
    EXPECT_EQ(SymbolicHotKeys::resolve(missionControl, &others), controlUp);
    const std::set<int> withDefault{32, 33, 36, 64, 79, 81};
    for (int number = -1; number < 256; ++number)
        EXPECT_EQ(SymbolicHotKeys::resolve(number, nullptr).has_value(),
                  withDefault.contains(number))
            << number;
}

TEST(SymbolicHotKeys, WhatTheUserSwitchedOffHasNoDefault) {
    for (const Value& off : {Value(0), Value(false), Value(0.5)}) {
        EXPECT_FALSE(resolved(missionControl, Dictionary{{"enabled", off}}));
        EXPECT_FALSE(resolved(missionControl, entry(off)));
    }
    for (const Value& type : {Value("button"), Value("Standard"), Value(1), Value()})
        EXPECT_FALSE(resolved(missionControl, entry(true, type)));
}

TEST(SymbolicHotKeys, TheirEntriesAreAMemberOfThePreferenceDomain) {
    const Value domain = Dictionary{{"AppleSymbolicHotKeys", Dictionary{{"32", entry(false)}}}};
    const Value::Dictionary* entries = SymbolicHotKeys::entriesOf(domain);
    ASSERT_NE(entries, nullptr);
    EXPECT_FALSE(SymbolicHotKeys::resolve(missionControl, entries)); // switched off
    for (const Value& other : {Value(), Value(1), Value(Dictionary{{"32", entry(false)}})})
        EXPECT_EQ(SymbolicHotKeys::entriesOf(other), nullptr);
}

TEST(SymbolicHotKeys, LookUpCountsOnlyIfSwitchedOn) {
    for (const Value& on : {Value(1), Value(true), Value(1.0)})
        EXPECT_TRUE(resolved(lookUp, entry(on)));
    for (const Value& unclear : {Value(7), Value(-1), Value("1"), Value(std::nan("")), Value()}) {
        EXPECT_TRUE(resolved(missionControl, entry(unclear)));
        EXPECT_FALSE(resolved(lookUp, entry(unclear)));
    }
}

TEST(SymbolicHotKeys, OnlyKeysThatCanBePressedCount) {
    const auto pressed = [](Value code, Value mask) {
        return resolved(160, Dictionary{{"value", choice(Array{97, code, mask})}});
    };
    for (int code = 0; code <= 127; ++code) {
        const bool isArrow = code >= 123 && code <= 126;
        EXPECT_EQ(pressed(code, 0).has_value(), hasKeyCode(Hotkey::functionKeys, code)) << code;
        EXPECT_EQ(pressed(code, 0x20000).value().flags, isArrow ? 0xA20000U : 0x20000U) << code;
    }
    for (const Value& code : {Value(-1), Value(128), Value(65536), Value(INT64_MAX)})
        EXPECT_FALSE(pressed(code, 0x20000));
    for (unsigned bit = 0; bit < 63; ++bit) {
        const std::uint64_t mask = std::uint64_t{1} << bit;
        EXPECT_EQ(pressed(0, mask).has_value(), (mask & 0x1E0000) != 0) << bit;
        EXPECT_EQ(pressed(122, mask).value().flags, mask & 0xBE0000) << bit;
    }
    for (const Value& mask : {Value(-1), Value(INT64_MIN)})
        EXPECT_FALSE(pressed(0, mask));
    EXPECT_EQ(pressed(1.9, INT64_MAX), (HotKey{.keyCode = 1, .flags = 0xBE0000}));
    EXPECT_FALSE(resolved(missionControl, Dictionary{{"value", choice(Array{97, 0, 0})}}));
    EXPECT_FALSE(SymbolicHotKeys::number(nullptr));
}

const std::string missionControlApp = "/System/Applications/Mission Control.app";
const std::string launchpadApp = "/System/Applications/Launchpad.app";
const std::string appsApp = "/System/Applications/Apps.app";
const Strings allApps{missionControlApp, launchpadApp, appsApp};

/// Returns the planned action: "126:a40000" for a hot key, a path and its arguments, "clock" or
/// "nothing".
std::string planned(Gesture gesture, const Dictionary* preferences, const Strings& installed) {
    const auto action = GesturePlan::action(gesture, preferences, [&](std::string_view path) {
        EXPECT_NE(path, "/Applications");
        return std::ranges::find(installed, path) != installed.end();
    });
    std::ostringstream text;
    if (const auto* key = std::get_if<HotKey>(&action)) {
        text << key->keyCode << ':' << std::hex << key->flags;
    } else if (const auto* opened = std::get_if<OpenAction>(&action)) {
        text << opened->path;
        for (const std::string& argument : opened->arguments)
            text << ' ' << argument;
    } else {
        text << (std::holds_alternative<NoAction>(action) ? "nothing" : "clock");
    }
    return text.str();
}

TEST(GesturePlan, PrefersTheShortcutThenTheApplicationThenTheLastResort) {
    struct Case {
        Gesture gesture;
        int number;                      ///< of its shortcut
        std::string unset;               ///< without preferences
        std::string withApp = "nothing"; ///< with the shortcut switched off
        std::string bare = "nothing";    ///< and nothing installed
    };

    using enum Gesture;
    const std::string& app = missionControlApp;
    const Case cases[] = {
        {.gesture = Gesture::missionControl, .number = 32, .unset = "126:a40000", .withApp = app},
        {.gesture = appWindows, .number = 33, .unset = "125:a40000", .withApp = app + " 2"},
        {.gesture = showDesktop, .number = 36, .unset = "103:800000", .withApp = app + " 1"},
        {.gesture = spaceNext, .number = 81, .unset = "124:a40000"},
        {.gesture = spacePrevious, .number = 79, .unset = "123:a40000"},
        {.gesture = Gesture::lookUp, .number = 70, .unset = "nothing"},
        {.gesture = notificationCenter,
         .number = 163,
         .unset = "clock",
         .withApp = "clock",
         .bare = "clock"},
    };
    for (const auto& [gesture, number, unset, withApp, bare] : cases) {
        const Dictionary on{{std::to_string(number), entry(true)}};
        const Dictionary disabled{{std::to_string(number), entry(false)}};
        EXPECT_EQ(planned(gesture, &on, allApps), "5:100000") << number;
        EXPECT_EQ(planned(gesture, nullptr, allApps), unset) << number;
        EXPECT_EQ(planned(gesture, &disabled, allApps), withApp) << number;
        EXPECT_EQ(planned(gesture, &disabled, {}), bare) << number;
    }
}

TEST(GesturePlan, AppsPrefersTheApplicationThenTheShortcuts) {
    const Value first = Dictionary{{"value", choice(Array{65535, 6, 0x100000})}};
    const Dictionary both{{"160", first}, {"64", entry(true)}};
    const Dictionary second{{"160", entry(false)}, {"64", entry(true)}};
    const Dictionary none{{"64", entry(false)}};
    EXPECT_EQ(planned(Gesture::apps, &both, allApps), appsApp);
    EXPECT_EQ(planned(Gesture::apps, &both, {missionControlApp, launchpadApp}), launchpadApp);
    EXPECT_EQ(planned(Gesture::apps, &both, {missionControlApp}), "6:100000");
    EXPECT_EQ(planned(Gesture::apps, &second, {}), "5:100000");
    EXPECT_EQ(planned(Gesture::apps, &none, {}), "/Applications");
    EXPECT_EQ(planned(Gesture::apps, nullptr, {}), "49:100000");
}

TEST(GestureDebounce, DropsGesturesThatComeTooFast) {
    const std::pair<double, bool> calls[] = {
        {std::nan(""), false}, {-1000, true}, {100, true}, {100.49, false},       {100.5, true},
        {100.75, false},       {90, false},   {101, true}, {std::nan(""), false}, {HUGE_VAL, true}};
    GestureDebounce debounce{.interval = 0.5};
    for (const auto& [now, accepted] : calls)
        EXPECT_EQ(debounce.accept(now), accepted) << now;
}

} // namespace
} // namespace velmo
