#include "core/input/HotkeyPlan.h"

#include "core/input/LayoutKeySearch.h"

#include <algorithm>
#include <iterator>

namespace velmo::HotkeyPlan {

namespace {

using Steps = std::vector<KeyPhase::Step>;

std::optional<LayoutKeySearch::Match> inLayout(const Hotkey& hotkey, const Translate& translate) {
    if (hotkey.game || !hotkey.typesCharacter())
        return std::nullopt;
    const bool command =
        std::ranges::find(hotkey.modifiers, HotkeyModifier::cmd) != hotkey.modifiers.end();
    const auto given = [&](std::uint16_t code, LayoutState state) {
        return translate(code, state, command);
    };
    for (const auto codes : {LayoutKeySearch::typingBlock, LayoutKeySearch::everyKey}) {
        if (auto match = LayoutKeySearch::find(hotkey.key, hotkey.modifiers, codes, given))
            return match;
    }
    return std::nullopt;
}

Steps released(const HeldKeys::Press& press, std::span<const HotkeyModifier> others) {
    return KeyPhase::steps(KeyPhase::up, press.modifiers, press.code, others);
}

} // namespace

Chord chord(const Hotkey& hotkey, const Translate& translate) {
    if (const auto match = inLayout(hotkey, translate))
        return {.modifiers = hotkey.pressModifiers(match->extra), .code = match->code};
    return {.modifiers = hotkey.modifiers, .code = hotkey.ansiCode()};
}

std::vector<KeyPhase::Step> steps(KeyPhase::Phase phase, const Hotkey& hotkey,
                                  const Translate& translate, HeldKeys& held) {
    if (phase == KeyPhase::up) {
        const auto press = held.take(hotkey);
        return press ? released(*press, held.modifiers()) : Steps();
    }
    const auto [modifiers, code] = chord(hotkey, translate);
    if (phase == KeyPhase::tap)
        return KeyPhase::steps(phase, modifiers, code, held.modifiers());

    // A repeated press must not take its own modifiers for another's.
    const auto before = held.take(hotkey);
    const auto others = held.modifiers();
    const HeldKeys::Press press{.modifiers = KeyPhase::fresh(modifiers, others), .code = code};
    Steps plan = before && before != press ? released(*before, others) : Steps();
    std::ranges::move(KeyPhase::steps(phase, modifiers, code, others), std::back_inserter(plan));
    held.pressed(hotkey, press);
    return plan;
}

std::vector<KeyPhase::Step> releases(std::span<const std::string> keys, HeldKeys& held) {
    Steps all;
    while (const auto next = held.takeRelease(keys))
        std::ranges::move(released(next->press, next->others), std::back_inserter(all));
    return all;
}

} // namespace velmo::HotkeyPlan
