#pragma once

#include "core/support/RawText.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmo {

/// A key that changes what other keys do while it is down.
enum class HotkeyModifier { cmd, ctrl, alt, shift, fn };

template<>
inline constexpr auto rawTexts<HotkeyModifier> =
    std::to_array<std::string_view>({"cmd", "ctrl", "alt", "shift", "fn"});

/// Returns the modifier's virtual key code; for a modifier with two keys, that of the left one.
constexpr std::uint16_t keyCode(HotkeyModifier modifier) {
    constexpr auto codes = std::to_array<std::uint16_t>({55, 59, 58, 56, 63});
    static_assert(codes.size() == allCases<HotkeyModifier>.size());
    return codes[static_cast<std::size_t>(std::to_underlying(modifier))];
}

/// Reads a word that is in lower case already: a raw text, or "win" for cmd and "option" for alt.
/// Absent if it names no modifier.
constexpr std::optional<HotkeyModifier> parseHotkeyModifier(std::string_view word) {
    if (word == "win")
        return HotkeyModifier::cmd;
    if (word == "option")
        return HotkeyModifier::alt;
    return fromRawText<HotkeyModifier>(word);
}

} // namespace velmo
