#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// The keys that may be asked for by name. A key stands for its place on a US keyboard.
namespace velmo {

struct AnsiKey {
    std::string_view name;
    std::uint16_t code; ///< the platform's virtual key code

    bool operator==(const AnsiKey&) const = default;
};

/// Every key, group by group: `Hotkey` cuts its groups out of this order. "delete" deletes
/// forwards, "backspace" backwards; "enter" is Return.
inline constexpr AnsiKey ansiKeys[] = {
    // letters
    {.name = "a", .code = 0},
    {.name = "b", .code = 11},
    {.name = "c", .code = 8},
    {.name = "d", .code = 2},
    {.name = "e", .code = 14},
    {.name = "f", .code = 3},
    {.name = "g", .code = 5},
    {.name = "h", .code = 4},
    {.name = "i", .code = 34},
    {.name = "j", .code = 38},
    {.name = "k", .code = 40},
    {.name = "l", .code = 37},
    {.name = "m", .code = 46},
    {.name = "n", .code = 45},
    {.name = "o", .code = 31},
    {.name = "p", .code = 35},
    {.name = "q", .code = 12},
    {.name = "r", .code = 15},
    {.name = "s", .code = 1},
    {.name = "t", .code = 17},
    {.name = "u", .code = 32},
    {.name = "v", .code = 9},
    {.name = "w", .code = 13},
    {.name = "x", .code = 7},
    {.name = "y", .code = 16},
    {.name = "z", .code = 6},
    // digits
    {.name = "0", .code = 29},
    {.name = "1", .code = 18},
    {.name = "2", .code = 19},
    {.name = "3", .code = 20},
    {.name = "4", .code = 21},
    {.name = "5", .code = 23},
    {.name = "6", .code = 22},
    {.name = "7", .code = 26},
    {.name = "8", .code = 28},
    {.name = "9", .code = 25},
    // function keys
    {.name = "f1", .code = 122},
    {.name = "f2", .code = 120},
    {.name = "f3", .code = 99},
    {.name = "f4", .code = 118},
    {.name = "f5", .code = 96},
    {.name = "f6", .code = 97},
    {.name = "f7", .code = 98},
    {.name = "f8", .code = 100},
    {.name = "f9", .code = 101},
    {.name = "f10", .code = 109},
    {.name = "f11", .code = 103},
    {.name = "f12", .code = 111},
    {.name = "f13", .code = 105},
    {.name = "f14", .code = 107},
    {.name = "f15", .code = 113},
    {.name = "f16", .code = 106},
    {.name = "f17", .code = 64},
    {.name = "f18", .code = 79},
    {.name = "f19", .code = 80},
    {.name = "f20", .code = 90},
    // navigation
    {.name = "up", .code = 126},
    {.name = "down", .code = 125},
    {.name = "left", .code = 123},
    {.name = "right", .code = 124},
    {.name = "tab", .code = 48},
    {.name = "enter", .code = 36},
    {.name = "escape", .code = 53},
    {.name = "delete", .code = 117},
    {.name = "backspace", .code = 51},
    {.name = "home", .code = 115},
    {.name = "end", .code = 119},
    {.name = "pageup", .code = 116},
    {.name = "pagedown", .code = 121},
    // in no group: it types a character, but every layout has it in this place
    {.name = "space", .code = 49},
    // punctuation
    {.name = "-", .code = 27},
    {.name = "=", .code = 24},
    {.name = "[", .code = 33},
    {.name = "]", .code = 30},
    {.name = "\\", .code = 42},
    {.name = ";", .code = 41},
    {.name = "'", .code = 39},
    {.name = ",", .code = 43},
    {.name = ".", .code = 47},
    {.name = "/", .code = 44},
    {.name = "`", .code = 50},
};

using AnsiKeys = std::span<const AnsiKey>;

/// Returns the key of this name, or null if the span has none.
constexpr const AnsiKey* findKey(AnsiKeys keys, std::string_view name) {
    const auto found = std::ranges::find(keys, name, &AnsiKey::name);
    return found == keys.end() ? nullptr : &*found;
}

constexpr bool hasKey(AnsiKeys keys, std::string_view name) {
    return findKey(keys, name) != nullptr;
}

/// Tells whether one of the keys has the code, which may be any number.
constexpr bool hasKeyCode(AnsiKeys keys, std::int64_t code) {
    return std::ranges::find(keys, code, &AnsiKey::code) != keys.end();
}

/// Returns the code of a key of `ansiKeys`; any other name does not compile.
consteval std::uint16_t ansiKeyCode(std::string_view name) {
    return findKey(ansiKeys, name)->code;
}

} // namespace velmo
