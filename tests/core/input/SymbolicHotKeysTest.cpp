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
    const Value values[] = {
        "text",
        Dictionary{{"type", "button"}},
        choice(Array{65535, 126}, "button"),
        choice(Array{65535, 126, 262144, 0}),
        choice(Array{65535, "126", 262144}),
        choice(Array{Value(), 126, 262144}),
        choice(Array{65535, 126, std::nan("")}),
        choice(Array{65535, 126, 0x1p63}),
        choice("65535"),
    };
    Array entries{"text", Array{}, Dictionary{}, Dictionary{{"enabled", true}}};
    for (const Value& value : values)
        entries.emplace_back(Dictionary{{"value", value}});
    for (const Value& entry : entries) {
        SCOPED_TRACE(&entry - entries.data());
        EXPECT_EQ(resolved(missionControl, entry), missionControlDefault);
        EXPECT_FALSE(resolved(noDefault, entry));
        EXPECT_FALSE(resolved(lookUp, entry));
    }
    const Dictionary others{{"33", Dictionary{{"enabled", 0}}}, {"032", Dictionary{}}};
    for (const Dictionary* preferences : {static_cast<const Dictionary*>(nullptr), &others}) {
        EXPECT_EQ(SymbolicHotKeys::resolve(missionControl, preferences), missionControlDefault);
        for (const int number : {-1, 0, 34, lookUp, noDefault, 163})
            EXPECT_FALSE(SymbolicHotKeys::resolve(number, preferences)) << number;
    }
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
    const auto expect = [](bool commonCounts, bool explicitCounts, const Array& enabled) {
        for (const Value& value : enabled) {
            SCOPED_TRACE(&value - enabled.data());
            const Dictionary entry{{"enabled", value}, {"value", choice(controlUp)}};
            EXPECT_EQ(resolved(missionControl, entry).has_value(), commonCounts);
            EXPECT_EQ(resolved(lookUp, entry).has_value(), explicitCounts);
        }
    };
    expect(true, true, {1, true, 1.0});
    expect(true, false, {7, -1, "1", "0", std::nan(""), Value()});
    expect(false, false, {0});
    const Dictionary unsaid{{"value", choice(controlUp)}};
    EXPECT_TRUE(resolved(missionControl, unsaid));
    EXPECT_FALSE(resolved(lookUp, unsaid));
}

TEST(SymbolicHotKeys, OnlyKeysThatCanBePressedCount) {
    const std::pair<Array, std::optional<HotKey>> cases[] = {
        {{65535, 0, 0}, {}},
        {{65535, 122, 0}, HotKey{122, 0}},
        {{65535, 122, 0x800000}, HotKey{122, 0x800000}},
        {{65535, 122, 0x10000}, HotKey{122, 0}},
        {{65535, 124, 262144}, HotKey{124, 0xA40000}},
        {{65535, 124, 0xA00000}, {}},
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
    for (const auto& [parameters, hotKey] : cases) {
        SCOPED_TRACE(testing::Message() << "key " << parameters[1].real().value_or(0) << " with "
                                        << parameters[2].real().value_or(0));
        const Dictionary entry{{"enabled", 1}, {"value", choice(parameters)}};
        EXPECT_EQ(resolved(missionControl, entry), hotKey);
        EXPECT_EQ(resolved(noDefault, entry), hotKey);
    }
    for (const std::uint64_t flag : {0x20000U, 0x40000U, 0x80000U, 0x100000U})
        EXPECT_EQ(resolved(noDefault, Dictionary{{"value", choice(Array{97, 0, flag})}}),
                  (HotKey{0, flag}));
    for (std::int64_t code = 0; code <= 127; ++code) {
        const Dictionary bare{{"value", choice(Array{65535, code, 0})}};
        EXPECT_EQ(resolved(missionControl, bare).has_value(),
                  hasKeyCode(Hotkey::functionKeys, code))
            << code;
    }
}

} // namespace
} // namespace velmo
