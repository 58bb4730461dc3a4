#include "core/input/HeldKeys.h"
#include "core/input/KeyPhase.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace velmo::Fuzz {

namespace {

void requireLimits(const Hotkey& hotkey) {
    const std::set distinct(hotkey.modifiers.begin(), hotkey.modifiers.end());
    require(distinct.size() == hotkey.modifiers.size());
    require(distinct.size() <= Hotkey::maxModifiers);
    if (hotkey.isModifierOnly())
        require(hotkey.game && !distinct.empty() && !distinct.contains(HotkeyModifier::fn));
    else
        require(hasKey(Hotkey::keys, hotkey.key));
    // Text must not be typed as hot keys.
    require(hotkey.game || hasKey(Hotkey::standalone, hotkey.key)
            || distinct.size() > distinct.count(HotkeyModifier::shift));
}

std::vector<std::string> argumentsOf(const Hotkey& hotkey) {
    std::vector<std::string> words(hotkey.modifiers.size());
    std::ranges::transform(hotkey.modifiers, words.begin(),
                           [](HotkeyModifier modifier) { return std::string(rawText(modifier)); });
    if (!hotkey.isModifierOnly())
        words.push_back(hotkey.key);
    std::vector<std::string> arguments{encodeJson(words).value()};
    if (hotkey.game)
        arguments.emplace_back(Hotkey::gameFlag);
    return arguments;
}

/// A tap is a press and its release, and leaves the same modifiers down as before.
void requirePlan(const Hotkey& hotkey, std::span<const HotkeyModifier> held) {
    const auto code = hotkey.ansiCode();
    auto steps = KeyPhase::steps(KeyPhase::down, hotkey.modifiers, code, held);
    std::ranges::move(KeyPhase::steps(KeyPhase::up, hotkey.modifiers, code, held),
                      std::back_inserter(steps));
    require(steps == KeyPhase::steps(KeyPhase::tap, hotkey.modifiers, code, held));
    require(steps.empty() || code || std::ranges::equal(steps.back().held, held));
    std::multiset<std::uint16_t> down;
    for (const KeyPhase::Step& step : steps) {
        if (step.down)
            down.insert(step.code);
        else
            require(down.erase(step.code) == 1);
    }
    require(down.empty());
}

/// The first byte gives the modifiers that are down already; the arguments follow it.
void checkHotkeys(Input input) {
    std::vector<HotkeyModifier> held;
    for (const unsigned bits = input.byte();
         const HotkeyModifier modifier : allCases<HotkeyModifier>) {
        if ((bits >> static_cast<unsigned>(modifier) & 1U) != 0)
            held.push_back(modifier);
    }
    const auto hotkey = Hotkey::parseArguments(input.words());
    if (!hotkey)
        return;
    requireLimits(*hotkey);
    require(Hotkey::parseArguments(argumentsOf(*hotkey)) == hotkey);
    requirePlan(*hotkey, held);

    const HeldKeys::Press press{.modifiers = KeyPhase::fresh(hotkey->modifiers, held), .code = {}};
    HeldKeys book;
    book.pressed(*hotkey, press);
    require(book.modifiers() == press.modifiers && book.take(*hotkey) == press && book.isEmpty());
}

const Target hotkeysTarget("Hotkeys", checkHotkeys);

} // namespace

} // namespace velmo::Fuzz
