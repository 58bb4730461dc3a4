#include "core/input/EventFlags.h"

#include "core/input/Hotkey.h"

#include <algorithm>
#include <array>

namespace velmo::EventFlags {

namespace {

/// The keys that carry `secondaryFn`, besides the arrows and the function keys.
constexpr auto keysWithFn =
    std::to_array({ansiKeyCode("home"), ansiKeyCode("end"), ansiKeyCode("pageup"),
                   ansiKeyCode("pagedown"), ansiKeyCode("delete")});

/// The digits of the numeric keypad and the keys around them; 95 is the comma of a Japanese keypad.
constexpr auto keypad = std::to_array<std::uint16_t>(
    {65, 67, 69, 71, 75, 76, 78, 81, 82, 83, 84, 85, 86, 87, 88, 89, 91, 92, 95});
static_assert(std::ranges::none_of(keypad, [](std::uint16_t code) {
    return hasKeyCode(Hotkey::keys, code);
}));

std::uint64_t ofKey(std::uint16_t code) {
    if (hasKeyCode(Hotkey::arrows, code))
        return arrow;
    if (std::ranges::find(keypad, code) != keypad.end())
        return numericPad;
    const bool hasFn = hasKeyCode(Hotkey::functionKeys, code)
                       || std::ranges::find(keysWithFn, code) != keysWithFn.end();
    return hasFn ? secondaryFn : 0;
}

} // namespace

std::uint64_t of(HotkeyModifier modifier) {
    switch (modifier) {
    case HotkeyModifier::cmd:
        return command;
    case HotkeyModifier::ctrl:
        return control;
    case HotkeyModifier::alt:
        return option;
    case HotkeyModifier::shift:
        return shift;
    case HotkeyModifier::fn:
        return secondaryFn;
    }
    return 0;
}

std::uint64_t of(const KeyPhase::Step& step) {
    std::uint64_t flags = ofKey(step.code);
    for (const HotkeyModifier modifier : step.held)
        flags |= of(modifier);
    return flags;
}

} // namespace velmo::EventFlags
