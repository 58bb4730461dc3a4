#pragma once

#include "core/input/AnsiKey.h"
#include "core/input/HotkeyModifier.h"
#include "core/support/Record.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A key combination that the phone asks for, such as cmd+shift+4.
///
/// In game mode a bare letter, or modifiers without any key, may be pressed as well; outside it
/// they would let a typing request pass for a hot key.
struct Hotkey {
    static constexpr std::size_t maxModifiers = 4;

    /// The second argument that switches game mode on.
    static constexpr std::string_view gameFlag = "game";

    /// Names and codes of all keys; the groups below are parts of it.
    static constexpr AnsiKeys ansiKeyCodes = ansiKeys;
    static constexpr AnsiKeys keys = ansiKeyCodes;
    static constexpr AnsiKeys letters = keys.first(26);
    static constexpr AnsiKeys digits = keys.subspan(26, 10);
    static constexpr AnsiKeys functionKeys = keys.subspan(36, 20);
    static constexpr AnsiKeys navigation = keys.subspan(56, 13);
    static constexpr AnsiKeys punctuation = keys.last(11);

    /// What may be pressed without a modifier, or with shift alone, outside game mode: function and
    /// navigation keys.
    static constexpr AnsiKeys standalone = keys.subspan(36, 33);

    std::vector<HotkeyModifier> modifiers; ///< as written, none twice
    std::string key;                       ///< a name in `keys`, or empty: modifiers only
    bool game = false;

    /// The arguments of a request: a JSON array of words, and perhaps "game".
    static std::optional<Hotkey> parseArguments(std::span<const std::string> arguments);

    /// A JSON array of texts, of at most 256 bytes.
    static std::optional<Hotkey> parseJson(std::string_view json, bool game);

    /// At most four modifiers and then one key, in any letter case, no modifier twice under
    /// whatever name. Outside game mode a key that is not in `standalone` needs a modifier other
    /// than shift. In game mode modifiers alone will do, at most four and fn not among them.
    static std::optional<Hotkey> parse(std::span<const std::string> words, bool game);

    [[nodiscard]] bool isModifierOnly() const { return key.empty(); }

    /// A letter, a digit or punctuation: where it lies depends on the keyboard layout.
    [[nodiscard]] bool typesCharacter() const;

    /// The modifiers to hold when the layout has the character only under `layoutExtra` as well.
    /// In game mode a bare key stays bare: it stands for a place on the keyboard. Nothing is left
    /// out when it occurs in both.
    [[nodiscard]] std::vector<HotkeyModifier>
    pressModifiers(std::span<const HotkeyModifier> layoutExtra) const;

    static constexpr auto fields =
        std::tuple{field("modifiers", &Hotkey::modifiers), field("key", &Hotkey::key),
                   field("game", &Hotkey::game)};
    bool operator==(const Hotkey&) const = default;
};

} // namespace velmo
