#pragma once

#include "core/input/HotkeyModifier.h"

#include <array>
#include <cstdint>
#include <vector>

namespace velmo {

/// A set of the two modifiers under which a keyboard layout gives other characters.
struct LayoutState {
    static const LayoutState shift;
    static const LayoutState option;

    /// The four states: none, shift, option, both.
    static const std::array<LayoutState, 4> searchOrder;

    int rawValue = 0; ///< the bits of `shift` and `option`

    [[nodiscard]] constexpr bool contains(LayoutState other) const {
        return (rawValue & other.rawValue) == other.rawValue;
    }

    /// Returns the modifiers of the state, shift before alt.
    [[nodiscard]] std::vector<HotkeyModifier> modifiers() const;

    /// Returns the modifier state that the platform's key translation takes: the bits of its event
    /// modifiers, shift (0x200) and option (0x800), moved right by 8.
    [[nodiscard]] std::uint32_t carbonModifierState() const;

    bool operator==(const LayoutState&) const = default;
};

inline constexpr LayoutState LayoutState::shift{1};
inline constexpr LayoutState LayoutState::option{2};
inline constexpr std::array<LayoutState, 4> LayoutState::searchOrder{{{0}, {1}, {2}, {3}}};

} // namespace velmo
