#pragma once

#include "core/input/AnsiKey.h"
#include "core/input/HotkeyModifier.h"
#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A key combination that the phone asks for, such as cmd+shift+4.
///
/// A game needs single letters, and modifiers without any key. Both are accepted in game mode only,
/// because text could be typed with them past the checks of a `TypeTextRequest`.
struct Hotkey {
    static constexpr std::size_t maxModifiers = 4;

    /// The second argument of a request for game mode.
    static constexpr std::string_view gameFlag = "game";

    /// The names and codes of all keys. The groups below are parts of it.
    static constexpr AnsiKeys ansiKeyCodes = ansiKeys;
    static constexpr AnsiKeys keys = ansiKeyCodes;
    static constexpr AnsiKeys letters = keys.first(26);
    static constexpr AnsiKeys digits = keys.subspan(26, 10);
    static constexpr AnsiKeys functionKeys = keys.subspan(36, 20);
    static constexpr AnsiKeys navigation = keys.subspan(56, 13);
    static constexpr AnsiKeys arrows = navigation.first(4);
    static constexpr AnsiKeys punctuation = keys.last(11);

    /// The keys that may be pressed without a modifier, or with shift alone, even outside game
    /// mode: function and navigation keys.
    static constexpr AnsiKeys standalone = keys.subspan(36, 33);

    std::vector<HotkeyModifier> modifiers; ///< in the order of the request, each once
    std::string key;                       ///< a name in `keys`, or empty for modifiers only
    bool game = false;

    /// Reads the arguments of a request: a JSON array of words, and perhaps "game".
    static std::optional<Hotkey> parseArguments(std::span<const std::string> arguments);

    /// Reads words from a JSON array of texts, of at most 256 bytes.
    static std::optional<Hotkey> parseJson(std::string_view json, bool game);

    /// Reads words in any letter case: at most four modifiers, then one key. Absent if a word names
    /// neither, or if two words name one modifier. Outside game mode a key that is not in
    /// `standalone` needs a modifier other than shift. In game mode the key may be missing; then fn
    /// is refused.
    static std::optional<Hotkey> parse(std::span<const std::string> words, bool game);

    [[nodiscard]] bool isModifierOnly() const { return key.empty(); }

    /// Tells whether the key is a letter, a digit or punctuation, so that its place depends on the
    /// keyboard layout.
    [[nodiscard]] bool typesCharacter() const;

    /// Returns the virtual key code of the key's place on a US keyboard; absent for modifiers only.
    /// In another layout a key that `typesCharacter` may lie elsewhere: `HotkeyPlan` finds it.
    [[nodiscard]] std::optional<std::uint16_t> ansiCode() const;

    /// Returns the modifiers to press: those of the hot key, then `layoutExtra`, which the keyboard
    /// layout needs to give the character (`LayoutKeySearch::Match::extra`). A modifier that is in
    /// both occurs twice. A bare key of game mode is pressed without modifiers, because it stands
    /// for a place on the keyboard, not for a character.
    [[nodiscard]] std::vector<HotkeyModifier>
    pressModifiers(std::span<const HotkeyModifier> layoutExtra) const;

    static constexpr auto fields =
        std::tuple{field("modifiers", &Hotkey::modifiers), field("key", &Hotkey::key),
                   field("game", &Hotkey::game)};
    bool operator==(const Hotkey&) const = default;
};

} // namespace velmo
