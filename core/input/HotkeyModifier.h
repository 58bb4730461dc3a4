#pragma once

#include "core/support/RawText.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmo {

enum class HotkeyModifier { cmd, ctrl, alt, shift, fn };

template<>
inline constexpr auto rawTexts<HotkeyModifier> =
    std::to_array<std::string_view>({"cmd", "ctrl", "alt", "shift", "fn"});

/// The virtual key code of the left one of its keys, as the platform's keyboard layouts number it.
constexpr std::uint16_t keyCode(HotkeyModifier modifier) {
    constexpr auto codes = std::to_array<std::uint16_t>({55, 59, 58, 56, 63});
    static_assert(codes.size() == allCases<HotkeyModifier>.size());
    return codes[static_cast<std::size_t>(std::to_underlying(modifier))];
}

/// Reads a word that is in lower case already: a raw text, or "win" for cmd and "option" for alt.
constexpr std::optional<HotkeyModifier> parseHotkeyModifier(std::string_view word) {
    if (word == "win")
        return HotkeyModifier::cmd;
    if (word == "option")
        return HotkeyModifier::alt;
    return fromRawText<HotkeyModifier>(word);
}

} // namespace velmo
