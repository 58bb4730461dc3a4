#include "core/input/SymbolicHotKeys.h"

#include "core/input/Hotkey.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

constexpr int missionControl = 32;
constexpr int lookUp = 70;
constexpr int noDefault = 160;
const HotKey missionControlDefault{126, 0xA40000};

const Array controlUp{65535, 126, 262144};

Value choice(Value parameters, Value type = "standard") {
    return Dictionary{{"parameters", std::move(parameters)}, {"type", std::move(type)}};
}

std::optional<HotKey> resolved(int number, Value entry) {
    const Dictionary preferences{{std::to_string(number), std::move(entry)}};
    return SymbolicHotKeys::resolve(number, &preferences);
}

TEST(SymbolicHotKeys, WithoutAReadableEntryTheDefaultCounts) {
    const Value entries[] = {
        "text",
        Array{},
        Dictionary{},
        Dictionary{{"enabled", true}},
        Dictionary{{"value", "text"}},
        Dictionary{{"value", Dictionary{{"type", "button"}}}},
        Dictionary{{"value", choice(Array{65535, 126}, "button")}},
        Dictionary{{"value", choice(Array{65535, 126, 262144, 0})}},
        Dictionary{{"value", choice(Array{65535, "126", 262144})}},
        Dictionary{{"value", choice(Array{Value(), 126, 262144})}},
        Dictionary{{"value", choice(Array{65535, 126, std::nan("")})}},
        Dictionary{{"value", choice(Array{65535, 126, 0x1p63})}},
        Dictionary{{"value", choice("65535")}},
    };
    for (const Value& entry : entries) {
        EXPECT_EQ(resolved(missionControl, entry), missionControlDefault);
        EXPECT_FALSE(resolved(noDefault, entry));
        EXPECT_FALSE(resolved(lookUp, entry));
    }
    const Dictionary others{{"33", Dictionary{{"enabled", 0}}}, {"032", Dictionary{}}};
    for (const Dictionary* preferences : {static_cast<const Dictionary*>(nullptr), &others}) {
        EXPECT_EQ(SymbolicHotKeys::resolve(missionControl, preferences), missionControlDefault);
        EXPECT_FALSE(SymbolicHotKeys::resolve(lookUp, preferences));
    }
}

TEST(SymbolicHotKeys, TheDefaultsAreThoseOfTheSystem) {
    const std::pair<int, HotKey> defaults[] = {{32, {126, 0xA40000}}, {33, {125, 0xA40000}},
                                               {36, {103, 0x800000}}, {64, {49, 0x100000}},
                                               {79, {123, 0xA40000}}, {81, {124, 0xA40000}}};
    for (const auto& [number, hotKey] : defaults)
        EXPECT_EQ(SymbolicHotKeys::resolve(number, nullptr), hotKey) << number;
    for (const int number : {-1, 0, 34, lookUp, noDefault, 163})
        EXPECT_FALSE(SymbolicHotKeys::resolve(number, nullptr)) << number;
}

TEST(SymbolicHotKeys, WhatTheUserSwitchedOffHasNoDefault) {
    for (const Value& off : {Value(0), Value(false), Value(0.0), Value(0.5)}) {
        EXPECT_FALSE(resolved(missionControl, Dictionary{{"enabled", off}}));
        EXPECT_FALSE(
            resolved(missionControl, Dictionary{{"enabled", off}, {"value", choice(controlUp)}}));
    }
    for (const Value& type : {Value("button"), Value("Standard"), Value(1), Value()})
        EXPECT_FALSE(resolved(missionControl, Dictionary{{"value", choice(controlUp, type)}}));
}

TEST(SymbolicHotKeys, SomeCountOnlyWhenSwitchedOn) {
    struct Case {
        Value enabled;
        bool commonCounts, explicitCounts;
    };

    const Case cases[] = {{1, true, true},    {true, true, true},          {1.0, true, true},
                          {7, true, false},   {-1, true, false},           {"1", true, false},
                          {"0", true, false}, {std::nan(""), true, false}, {Value(), true, false},
                          {0, false, false}};
    int row = 0;
    for (const Case& c : cases) {
        const Dictionary entry{{"enabled", c.enabled}, {"value", choice(controlUp)}};
        EXPECT_EQ(resolved(missionControl, entry).has_value(), c.commonCounts) << "row " << row;
        EXPECT_EQ(resolved(lookUp, entry).has_value(), c.explicitCounts) << "row " << row;
        ++row;
    }
    const Dictionary unsaid{{"value", choice(controlUp)}};
    EXPECT_TRUE(resolved(missionControl, unsaid));
    EXPECT_FALSE(resolved(lookUp, unsaid));
}

TEST(SymbolicHotKeys, OnlyKeysThatCanBePressedCount) {
    struct Case {
        Array parameters;
        std::optional<HotKey> hotKey;
    };

    const Case cases[] = {
        {{65535, 0, 0}, {}},
        {{65535, 122, 0}, HotKey{122, 0}},
        {{65535, 122, 0x800000}, HotKey{122, 0x800000}},
        {{65535, 122, 0x10000}, HotKey{122, 0}},
        {{65535, 124, 262144}, HotKey{124, 0xA40000}},
        {{65535, 124, 0xA00000}, {}},
        {{97, 0, 0x20000}, HotKey{0, 0x20000}},
        {{97, 0, 0x40000}, HotKey{0, 0x40000}},
        {{97, 0, 0x80000}, HotKey{0, 0x80000}},
        {{97, 0, 0x100000}, HotKey{0, 0x100000}},
        {{97, 0, 0x10000}, {}},
        {{97, 127, INT64_MAX}, HotKey{127, 0xBE0000}},
        {{97, 128, 0x20000}, {}},
        {{97, 65536, 0x20000}, {}},
        {{97, -1, 0x20000}, {}},
        {{97, 0, -1}, {}},
        {{97, 0, INT64_MIN}, {}},
        {{true, 1.9, 131072.0}, HotKey{1, 0x20000}},
        {{-1, 123, 0x20000}, HotKey{123, 0xA20000}},
        {{-1, 122.5, 0x20000}, HotKey{122, 0x20000}},
    };
    int row = 0;
    for (const Case& c : cases) {
        const Dictionary entry{{"enabled", 1}, {"value", choice(c.parameters)}};
        EXPECT_EQ(resolved(missionControl, entry), c.hotKey) << "row " << row;
        EXPECT_EQ(resolved(noDefault, entry), c.hotKey) << "row " << row;
        ++row;
    }
    for (std::int64_t code = 0; code <= 127; ++code) {
        const Dictionary bare{{"value", choice(Array{65535, code, 0})}};
        EXPECT_EQ(resolved(missionControl, bare).has_value(),
                  hasKeyCode(Hotkey::functionKeys, code))
            << code;
    }
}

} // namespace
} // namespace velmo
