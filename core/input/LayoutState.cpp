#include "core/input/LayoutState.h"

namespace velmo {

std::vector<HotkeyModifier> LayoutState::modifiers() const {
    std::vector<HotkeyModifier> result;
    if (contains(shift))
        result.push_back(HotkeyModifier::shift);
    if (contains(option))
        result.push_back(HotkeyModifier::alt);
    return result;
}

std::uint32_t LayoutState::carbonModifierState() const {
    return (contains(shift) ? 0x200U >> 8U : 0U) | (contains(option) ? 0x800U >> 8U : 0U);
}

} // namespace velmo
