#pragma once

#include "core/input/GestureAction.h"
#include "core/support/Value.h"

#include <cstdint>
#include <optional>

/// The keyboard shortcuts that the user's preferences assign to functions of the desktop. The
/// preferences are a dictionary by the decimal text of a shortcut's number:
///
///     "32": {"enabled": true, "value": {"type": "standard", "parameters": [65535, 126, 8650752]}}
///
/// The parameters are a character (unused here), a virtual key code and a mask of `EventFlags`.
namespace velmo::SymbolicHotKeys {

struct Default {
    int number;
    HotKey hotKey;
};

/// What the system does when the preferences say nothing. 32 is Mission Control, 33 application
/// windows, 36 show desktop, 64 the search that `apps` falls back to, 79 and 81 the previous and
/// the next space.
inline constexpr Default defaults[] = {
    {.number = 32, .hotKey = {.keyCode = 126, .flags = 0xA40000}},
    {.number = 33, .hotKey = {.keyCode = 125, .flags = 0xA40000}},
    {.number = 36, .hotKey = {.keyCode = 103, .flags = 0x800000}},
    {.number = 64, .hotKey = {.keyCode = 49, .flags = 0x100000}},
    {.number = 79, .hotKey = {.keyCode = 123, .flags = 0xA40000}},
    {.number = 81, .hotKey = {.keyCode = 124, .flags = 0xA40000}},
};

/// Shortcuts that count only when the preferences switch them on: 70 looks a word up.
inline constexpr int explicitOnly[] = {70};

/// The shortcut to press. Where the preferences (null: there are none) have no entry, or one that
/// can't be read, it is the default, if there is one; where the user switched it off, or chose
/// something that can't be pressed, such as a key without modifiers, it is absent.
std::optional<HotKey> resolve(int number, const Value::Dictionary* preferences);

/// `Value::number` of a value that may be missing.
inline std::optional<std::int64_t> number(const Value* value) {
    return value == nullptr ? std::nullopt : value->number();
}

} // namespace velmo::SymbolicHotKeys
