#include "core/input/HeldKeys.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace velmo {

namespace {

/// Returns the key at the end of a press's identifier; "" for a press of modifiers only.
std::string_view keyIn(std::string_view identifier) {
    static_assert(std::ranges::none_of(Hotkey::keys,
                                       [](const AnsiKey& key) { return key.name.contains('+'); }));
    return identifier.substr(identifier.rfind('+') + 1);
}

} // namespace

std::string HeldKeys::id(const Hotkey& hotkey) {
    auto sorted = hotkey.modifiers;
    std::ranges::sort(sorted, {}, rawText<HotkeyModifier>);
    std::string text;
    for (const HotkeyModifier modifier : sorted)
        text.append(rawText(modifier)).append("+");
    return text + hotkey.key;
}

void HeldKeys::pressed(const Hotkey& hotkey, Press press) {
    take(hotkey);
    presses_.emplace_back(id(hotkey), std::move(press));
}

std::optional<HeldKeys::Press> HeldKeys::take(const Hotkey& hotkey) {
    const auto found =
        std::ranges::find(presses_, id(hotkey), [](const auto& entry) { return entry.first; });
    if (found == presses_.end())
        return std::nullopt;
    Press press = std::move(found->second);
    presses_.erase(found);
    return press;
}

std::optional<HeldKeys::Press> HeldKeys::takeLast() {
    if (presses_.empty())
        return std::nullopt;
    Press press = std::move(presses_.back().second);
    presses_.pop_back();
    return press;
}

std::vector<HeldKeys::Press> HeldKeys::takeAll() {
    std::vector<Press> all;
    while (auto press = takeLast())
        all.push_back(*std::move(press));
    return all;
}

std::optional<HeldKeys::Release> HeldKeys::takeRelease(std::span<const std::string> keys) {
    for (auto entry = presses_.rbegin(); entry != presses_.rend(); ++entry) {
        if (!keys.empty() && std::ranges::find(keys, keyIn(entry->first)) == keys.end())
            continue;
        Press press = std::move(entry->second);
        presses_.erase(std::prev(entry.base()));
        return Release{.press = std::move(press), .others = modifiers()};
    }
    return std::nullopt;
}

std::vector<HotkeyModifier> HeldKeys::modifiers() const {
    std::vector<HotkeyModifier> all;
    for (const auto& [identifier, press] : presses_) {
        for (const HotkeyModifier modifier : press.modifiers) {
            if (std::ranges::find(all, modifier) == all.end())
                all.push_back(modifier);
        }
    }
    return all;
}

} // namespace velmo
