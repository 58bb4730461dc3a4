#include "core/input/EventFlags.h"

#include "core/input/Hotkey.h"

#include <algorithm>
#include <array>

namespace velmo::EventFlags {

namespace {

/// Besides the arrows and the function keys.
constexpr auto keysWithFn =
    std::to_array({ansiKeyCode("home"), ansiKeyCode("end"), ansiKeyCode("pageup"),
                   ansiKeyCode("pagedown"), ansiKeyCode("delete")});

std::uint64_t ofKey(std::uint16_t code) {
    if (hasKeyCode(Hotkey::arrows, code))
        return arrow;
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
