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

/// The keys of the typing block, of any keyboard that has more of them than a US one too.
inline constexpr CodeRange typingBlock{.first = 0, .end = 51};

/// Every key, the numeric keypad included. There most layouts give digits and signs without shift,
/// but who asks for cmd+2 means the typing block, which is therefore searched first.
inline constexpr CodeRange everyKey{.first = 0, .end = 128};

/// Returns the text that a key gives in a state of the current layout; absent or empty if it gives
/// none.
using Translate = std::function<std::optional<std::string>(std::uint16_t code, LayoutState state)>;

/// Returns the first key that gives the character, or nothing if none does. States whose modifiers
/// the user asked for anyway are searched before the others, each group in the order of
/// `LayoutState::searchOrder`; in each state, lower codes come before higher ones. A state with
/// shift must give the character exactly. In the others letter case is ignored, so that "A" finds
/// the key that gives "a".
std::optional<Match> find(std::string_view character, std::span<const HotkeyModifier> userModifiers,
                          CodeRange codes, const Translate& translate);

} // namespace velmo::LayoutKeySearch
