#pragma once

#include "core/input/AnsiKey.h"
#include "core/input/EventFlags.h"
#include "core/input/Hotkey.h"
#include "core/support/Value.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// The keyboard shortcuts that the user's preferences assign to functions of the desktop. The
/// preferences are a dictionary; its keys are the numbers of the shortcuts as decimal texts:
///
///     "32": {"enabled": true, "value": {"type": "standard", "parameters": [65535, 126, 8650752]}}
///
/// The parameters are three numbers: a character, which is ignored, a virtual key code and a mask
/// of `EventFlags`.
namespace velmo::SymbolicHotKeys {

/// A key to press and the modifiers to press it with.
struct HotKey {
    std::uint16_t keyCode = 0; ///< virtual key code
    std::uint64_t flags = 0;   ///< `EventFlags`

    bool operator==(const HotKey&) const = default;
};

/// The numbers under which the preferences keep the shortcuts that gestures need.
namespace Number {

inline constexpr int missionControl = 32;
inline constexpr int appWindows = 33;
inline constexpr int showDesktop = 36;
inline constexpr int search = 64;
inline constexpr int lookUp = 70;
inline constexpr int spacePrevious = 79;
inline constexpr int spaceNext = 81;
inline constexpr int apps = 160;
inline constexpr int notificationCenter = 163;

} // namespace Number

struct Default {
    int number;
    HotKey hotKey;
};

/// Returns the shortcut of control and an arrow key.
consteval HotKey controlAnd(std::string_view arrow) {
    return {.keyCode = ansiKeyCode(arrow), .flags = EventFlags::control | EventFlags::arrow};
}

/// The shortcuts that the system has from the start.
inline constexpr Default defaults[] = {
    {.number = Number::missionControl, .hotKey = controlAnd("up")},
    {.number = Number::appWindows, .hotKey = controlAnd("down")},
    {.number = Number::showDesktop,
     .hotKey = {.keyCode = ansiKeyCode("f11"), .flags = EventFlags::secondaryFn}},
    {.number = Number::search,
     .hotKey = {.keyCode = ansiKeyCode("space"), .flags = EventFlags::command}},
    {.number = Number::spacePrevious, .hotKey = controlAnd("left")},
    {.number = Number::spaceNext, .hotKey = controlAnd("right")},
};

/// The shortcuts without a default, which count only if the preferences switch them on.
inline constexpr int explicitOnly[] = {Number::lookUp};

/// The virtual key codes of the function keys, the only ones that are a shortcut without a
/// modifier.
inline constexpr auto function = [] {
    std::array<std::uint16_t, Hotkey::functionKeys.size()> codes{};
    std::ranges::transform(Hotkey::functionKeys, codes.begin(), &AnsiKey::code);
    return codes;
}();

/// The member of the preference domain "com.apple.symbolichotkeys" that contains the entries.
inline constexpr std::string_view domainMember = "AppleSymbolicHotKeys";

/// Returns the entries in the domain's property list, for `resolve` and `GesturePlan::action`; null
/// if they are missing. Do not pass the property list itself to these functions: every shortcut
/// would then be taken for the default.
const Value::Dictionary* entriesOf(const Value& domain);

/// Returns the shortcut to press. If the preferences are missing (null) or have no readable entry
/// for the number, returns its default, or nothing for a number without one. Returns nothing if the
/// user switched the shortcut off or chose something that can't be pressed, such as a letter
/// without modifiers.
std::optional<HotKey> resolve(int number, const Value::Dictionary* preferences);

/// Returns `Value::number` of a value that may be missing (null).
inline std::optional<std::int64_t> number(const Value* value) {
    return value == nullptr ? std::nullopt : value->number();
}

} // namespace velmo::SymbolicHotKeys
