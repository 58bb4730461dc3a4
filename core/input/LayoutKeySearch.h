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

/// Finds the key that gives a character in the user's keyboard layout.
namespace velmo::LayoutKeySearch {

struct Match {
    std::uint16_t code = 0;            ///< virtual key code
    std::vector<HotkeyModifier> extra; ///< to hold besides the modifiers that the user asked for

    bool operator==(const Match&) const = default;
};

/// From `first` up to, but without, `end`; so 65535 is in none.
struct CodeRange {
    std::uint16_t first = 0;
    std::uint16_t end = 0;
};

/// What a key gives in a state of the current layout; absent or empty: nothing.
using Translate = std::function<std::optional<std::string>(std::uint16_t code, LayoutState state)>;

/// The first match: states that need none of the modifiers that the user did not ask for come
/// before the others, and lower codes before higher ones. Without shift letter case is ignored, so
/// that "A" finds the key "a". Absent when no key gives the character.
std::optional<Match> find(std::string_view character, std::span<const HotkeyModifier> userModifiers,
                          CodeRange codes, const Translate& translate);

} // namespace velmo::LayoutKeySearch
