#include "core/input/KeyPhase.h"

#include <algorithm>
#include <ranges>

namespace velmo::KeyPhase {

std::vector<HotkeyModifier> fresh(std::span<const HotkeyModifier> modifiers,
                                  std::span<const HotkeyModifier> alreadyHeld) {
    std::vector<HotkeyModifier> result;
    std::ranges::copy_if(modifiers, std::back_inserter(result), [&](HotkeyModifier modifier) {
        return std::ranges::find(alreadyHeld, modifier) == alreadyHeld.end();
    });
    return result;
}

std::vector<Step> steps(Phase phase, std::span<const HotkeyModifier> modifiers,
                        std::optional<std::uint16_t> key,
                        std::span<const HotkeyModifier> alreadyHeld) {
    const auto own = fresh(modifiers, alreadyHeld);
    std::vector<HotkeyModifier> held(alreadyHeld.begin(), alreadyHeld.end());
    std::vector<Step> plan;
    const auto post = [&](std::uint16_t code, bool down) {
        plan.push_back({.code = code, .down = down, .held = held});
    };

    for (const HotkeyModifier modifier : own) {
        held.push_back(modifier);
        if (phase != up)
            post(keyCode(modifier), true);
    }
    if (key && phase != up)
        post(*key, true);
    if (phase == down)
        return plan;

    if (key)
        post(*key, false);
    for (const HotkeyModifier modifier : own | std::views::reverse) {
        // The first release ends a modifier, even one that is listed twice.
        std::erase(held, modifier);
        post(keyCode(modifier), false);
    }
    return plan;
}

} // namespace velmo::KeyPhase
