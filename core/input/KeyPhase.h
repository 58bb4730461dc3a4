#pragma once

#include "core/input/HotkeyModifier.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Plans the key events that make up a press, a release, or both at once.
namespace velmo::KeyPhase {

enum class Phase {
    tap,  ///< press and release
    down, ///< press and leave pressed
    up,   ///< release what an earlier `down` pressed
};
using enum Phase;

/// An event to post.
struct Step {
    std::uint16_t code = 0; ///< virtual key code
    bool down = false;
    std::vector<HotkeyModifier> held; ///< the modifiers that are down after it: its event flags

    static constexpr auto fields = std::tuple{
        field("code", &Step::code), field("down", &Step::down), field("held", &Step::held)};
    bool operator==(const Step&) const = default;
};

/// Returns the events of one phase in the order in which to post them: modifiers go down before
/// the key and come up after it, in reverse. The modifiers in `alreadyHeld` belong to other presses
/// (`HeldKeys::modifiers`) and are neither pressed nor released. `key` is a virtual key code; if it
/// is absent, only modifiers are pressed and released. A tap of cmd+shift+4 is
///
///     down 55 [cmd], down 56 [cmd, shift], down 21 [cmd, shift],
///     up 21 [cmd, shift], up 56 [cmd], up 55 []
std::vector<Step> steps(Phase phase, std::span<const HotkeyModifier> modifiers,
                        std::optional<std::uint16_t> key,
                        std::span<const HotkeyModifier> alreadyHeld);

/// Returns the members of `modifiers` that are not in `alreadyHeld`, in their order. A press puts
/// these down itself, and its `HeldKeys::Press` must record them.
std::vector<HotkeyModifier> fresh(std::span<const HotkeyModifier> modifiers,
                                  std::span<const HotkeyModifier> alreadyHeld);

} // namespace velmo::KeyPhase
