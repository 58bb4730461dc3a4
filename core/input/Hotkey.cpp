#include "core/input/Hotkey.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

namespace {

using Words = std::span<const std::string>;

constexpr std::size_t maxHotkeyJson = 256; // bytes
constexpr std::size_t maxWord = 12;        // characters

constexpr bool runsFrom(AnsiKeys group, std::string_view first, std::string_view last) {
    return group.front().name == first && group.back().name == last;
}

static_assert(runsFrom(Hotkey::letters, "a", "z"));
static_assert(runsFrom(Hotkey::digits, "0", "9"));
static_assert(runsFrom(Hotkey::functionKeys, "f1", "f20"));
static_assert(runsFrom(Hotkey::navigation, "up", "pagedown"));
static_assert(runsFrom(Hotkey::arrows, "up", "right"));
static_assert(runsFrom(Hotkey::punctuation, "-", "`"));
static_assert(runsFrom(Hotkey::standalone, "f1", "pagedown"));
static_assert(std::ranges::all_of(Hotkey::keys, [](const AnsiKey& key) {
    return std::ranges::count(Hotkey::keys, key.name, &AnsiKey::name) == 1
           && std::ranges::count(Hotkey::keys, key.code, &AnsiKey::code) == 1;
}));

/// Returns the modifiers that the words name, or nothing if a word names no modifier or names one
/// for the second time.
std::optional<std::vector<HotkeyModifier>> distinctModifiers(Words words) {
    std::vector<HotkeyModifier> modifiers;
    for (const std::string& word : words) {
        const auto modifier = parseHotkeyModifier(word);
        if (!modifier || std::ranges::find(modifiers, *modifier) != modifiers.end())
            return std::nullopt;
        modifiers.push_back(*modifier);
    }
    return modifiers;
}

/// Reads modifiers that are to be pressed without a key. At most four are accepted: a modifier may
/// occur once, and fn is refused, because it can't be pressed without a key.
std::optional<Hotkey> modifierOnly(Words words) {
    auto modifiers = distinctModifiers(words);
    if (!modifiers || std::ranges::find(*modifiers, HotkeyModifier::fn) != modifiers->end())
        return std::nullopt;
    return Hotkey{.modifiers = *std::move(modifiers), .key = {}, .game = true};
}

bool isModifier(const std::string& word) {
    return parseHotkeyModifier(word).has_value();
}

bool isShift(HotkeyModifier modifier) {
    return modifier == HotkeyModifier::shift;
}

} // namespace

std::optional<Hotkey> Hotkey::parseArguments(std::span<const std::string> arguments) {
    if (arguments.size() == 1)
        return parseJson(arguments[0], false);
    if (arguments.size() == 2 && arguments[1] == gameFlag)
        return parseJson(arguments[0], true);
    return std::nullopt;
}

std::optional<Hotkey> Hotkey::parseJson(std::string_view json, bool game) {
    if (json.size() > maxHotkeyJson)
        return std::nullopt;
    const auto words = decodeJsonText<std::vector<std::string>>(json);
    return words ? parse(*words, game) : std::nullopt;
}

std::optional<Hotkey> Hotkey::parse(std::span<const std::string> words, bool game) {
    if (words.empty() || words.size() > maxModifiers + 1)
        return std::nullopt;
    std::vector<std::string> lowered;
    for (const std::string& word : words) {
        if (Text::hasMoreCharactersThan(word, maxWord))
            return std::nullopt;
        lowered.push_back(Text::lowercased(word));
    }

    if (game && std::ranges::all_of(lowered, isModifier))
        return modifierOnly(lowered);

    auto modifiers = distinctModifiers(Words(lowered).first(lowered.size() - 1));
    if (!modifiers || !hasKey(keys, lowered.back()))
        return std::nullopt;
    if (!game && !hasKey(standalone, lowered.back()) && std::ranges::all_of(*modifiers, isShift))
        return std::nullopt;
    return Hotkey{
        .modifiers = *std::move(modifiers), .key = std::move(lowered.back()), .game = game};
}

bool Hotkey::typesCharacter() const {
    return hasKey(letters, key) || hasKey(digits, key) || hasKey(punctuation, key);
}

std::optional<std::uint16_t> Hotkey::ansiCode() const {
    const AnsiKey* found = findKey(ansiKeyCodes, key);
    return found == nullptr ? std::nullopt : std::optional(found->code);
}

std::vector<HotkeyModifier>
Hotkey::pressModifiers(std::span<const HotkeyModifier> layoutExtra) const {
    if (game && modifiers.empty())
        return {};
    auto all = modifiers;
    all.insert(all.end(), layoutExtra.begin(), layoutExtra.end());
    return all;
}

} // namespace velmo
