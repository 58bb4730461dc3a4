#pragma once

#include "core/input/Hotkey.h"
#include "core/input/InputMessage.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

/// Maps the keys of `InputMessage`, which have the names that a web page gives them, to those of
/// `Hotkey`.
namespace velmo {

struct MessageKey {
    std::string_view name; ///< in `InputMessage::keys`
    std::string_view key;  ///< in `Hotkey::keys`
};

inline constexpr MessageKey messageKeys[] = {
    {.name = "Backspace", .key = "backspace"},
    {.name = "Delete", .key = "delete"},
    {.name = "Enter", .key = "enter"},
    {.name = "Tab", .key = "tab"},
    {.name = "Escape", .key = "escape"},
    {.name = "ArrowLeft", .key = "left"},
    {.name = "ArrowRight", .key = "right"},
    {.name = "ArrowUp", .key = "up"},
    {.name = "ArrowDown", .key = "down"},
    {.name = "Home", .key = "home"},
    {.name = "End", .key = "end"},
};
static_assert(std::ranges::equal(messageKeys, InputMessage::keys, {}, &MessageKey::name));
static_assert(std::ranges::all_of(
    messageKeys, [](std::string_view key) { return hasKey(Hotkey::standalone, key); },
    &MessageKey::key));

/// Returns the hot key that a message asks to tap, for `HotkeyPlan::steps`. Absent only if the name
/// is not in `InputMessage::keys`, which `InputMessage::decode` refuses.
inline std::optional<Hotkey> hotkeyOf(const InputMessage::Key& message) {
    const auto* const found = std::ranges::find(messageKeys, message.name, &MessageKey::name);
    if (found == std::end(messageKeys))
        return std::nullopt;
    return Hotkey{.modifiers = {}, .key = std::string(found->key)};
}

} // namespace velmo
