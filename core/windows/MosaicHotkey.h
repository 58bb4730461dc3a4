#pragma once

#include "core/input/Hotkey.h"
#include "core/support/Record.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Gives a modifier key its bit in the masks of the platform's service for global hot keys
/// (Carbon's cmdKey, shiftKey, optionKey and controlKey).
struct MosaicModifier {
    std::string_view name;
    std::uint32_t mask;
};

/// Describes a global shortcut that arranges windows in a mosaic. The user configures it as a line:
///
///     grid=ctrl+alt+g
struct MosaicHotkey {
    static constexpr auto ids = std::to_array<std::string_view>(
        {"grid", "columns", "rows", "side", "left", "right", "up", "down", "focus", "pause",
         "terminals", "browsers", "finder", "frontApp"});

    static constexpr MosaicModifier modifierFlags[] = {
        {.name = "cmd", .mask = 256},
        {.name = "shift", .mask = 512},
        {.name = "alt", .mask = 2048},
        {.name = "ctrl", .mask = 4096},
    };

    /// Letters, digits and a few other keys, with the codes of `Hotkey::ansiKeyCodes`. The Return
    /// key is called "return" here, but "enter" there.
    static constexpr auto keyCodes = [] {
        constexpr auto others = std::to_array<std::string_view>(
            {"enter", "tab", "space", "left", "right", "down", "up"});
        std::array<AnsiKey, Hotkey::letters.size() + Hotkey::digits.size() + others.size()> keys{};
        AnsiKey* end = std::ranges::copy(Hotkey::letters, keys.data()).out;
        end = std::ranges::copy(Hotkey::digits, end).out;
        for (const std::string_view name : others) {
            *end = *findKey(Hotkey::ansiKeyCodes, name);
            if (name == "enter")
                end->name = "return";
            ++end;
        }
        return keys;
    }();

    std::string id; ///< the action, one of `ids`
    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0; ///< masks of `modifierFlags`

    /// Reads a line: the action, exactly as in `ids`, an equals sign, at least two different
    /// modifiers and a key. With fewer modifiers a shortcut of an application could be taken over.
    /// Modifiers and key may be in any letter case and are separated by one or more plus signs,
    /// which may also stand before and after them. Blanks are refused.
    static std::optional<MosaicHotkey> parse(std::string_view line);

    /// Reads all lines and returns the shortcuts in the order of the lines. A line that `parse`
    /// refuses is skipped. Several lines may name the same action.
    static std::vector<MosaicHotkey> parseAll(std::span<const std::string> lines);

    static constexpr auto fields =
        std::tuple{field("id", &MosaicHotkey::id), field("keyCode", &MosaicHotkey::keyCode),
                   field("modifiers", &MosaicHotkey::modifiers)};
    bool operator==(const MosaicHotkey&) const = default;
};

} // namespace velmo
