#pragma once

#include "core/input/HotkeyModifier.h"
#include "core/input/LayoutState.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Finds the key that gives a character in the user's keyboard layout. Hot keys are named after a
/// US keyboard, but cmd+z must press the key that gives "z", wherever the user's layout has it; and
/// where "/" is shift+7, cmd+"/" is a press of cmd+shift+7: code 26, `extra` shift.
namespace velmo::LayoutKeySearch {

struct Match {
    std::uint16_t code = 0;            ///< virtual key code
    std::vector<HotkeyModifier> extra; ///< to press besides those that the user asked for

    bool operator==(const Match&) const = default;
};

/// The key codes from `first` up to, but without, `end`.
struct CodeRange {
    std::uint16_t first = 0;
    std::uint16_t end = 0;
};

/// The keys of the typing block, including those of a keyboard that has more of them than a US one.
inline constexpr CodeRange typingBlock{.first = 0, .end = 51};

/// Every key, including the numeric keypad. Most layouts give digits and signs without shift there,
/// but a request for cmd+2 means the typing block, which is therefore searched first.
inline constexpr CodeRange everyKey{.first = 0, .end = 128};

/// Returns the text that a key gives in a state of the current layout; absent or empty if it gives
/// none.
using Translate = std::function<std::optional<std::string>(std::uint16_t code, LayoutState state)>;

/// Returns the first key that gives the character, or nothing if no key does. The states that need
/// no modifier beyond those that the user asked for are searched before the others, and each group
/// in the order of `LayoutState::searchOrder`; in a state, lower codes come before higher ones. A
/// state with shift must give the character exactly. In the others letter case is ignored, so that
/// "A" finds the key that gives "a".
std::optional<Match> find(std::string_view character, std::span<const HotkeyModifier> userModifiers,
                          CodeRange codes, const Translate& translate);

} // namespace velmo::LayoutKeySearch
