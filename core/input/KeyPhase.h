#pragma once

#include "core/input/HotkeyModifier.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Which key events make up a press, a release, or both at once.
namespace velmo::KeyPhase {

enum class Phase {
    tap,  ///< press and release
    down, ///< press and leave pressed
    up,   ///< release what an earlier `down` pressed
};
using enum Phase;

/// One event to post.
struct Step {
    std::uint16_t code = 0; ///< virtual key code
    bool down = false;
    std::vector<HotkeyModifier> held; ///< after the event: the modifier flags that it carries

    static constexpr auto fields = std::tuple{
        field("code", &Step::code), field("down", &Step::down), field("held", &Step::held)};
    bool operator==(const Step&) const = default;
};

/// The events of one phase, in the order in which to post them. Modifiers in `alreadyHeld` belong
/// to other presses and are neither pressed nor released. Without a key only modifiers move.
std::vector<Step> steps(Phase phase, std::span<const HotkeyModifier> modifiers,
                        std::optional<std::uint16_t> key,
                        std::span<const HotkeyModifier> alreadyHeld);

/// Those of `modifiers` that are not held already: what a press puts down itself, and so what its
/// `HeldKeys::Press` has to remember.
std::vector<HotkeyModifier> fresh(std::span<const HotkeyModifier> modifiers,
                                  std::span<const HotkeyModifier> alreadyHeld);

} // namespace velmo::KeyPhase
