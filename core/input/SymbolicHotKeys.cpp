#include "core/input/SymbolicHotKeys.h"

#include "core/input/Hotkey.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace velmo::SymbolicHotKeys {

namespace {

constexpr std::uint64_t pressableModifiers =
    EventFlags::shift | EventFlags::control | EventFlags::option | EventFlags::command;

/// Caps lock, help and the bits that tell a left key from a right one are dropped.
constexpr std::uint64_t keptFlags = pressableModifiers | EventFlags::arrow;

constexpr std::int64_t maxKeyCode = 127;

constexpr bool isExplicitOnly(int number) {
    return std::ranges::find(explicitOnly, number) != std::end(explicitOnly);
}

static_assert(std::ranges::none_of(defaults, isExplicitOnly, &Default::number));

std::optional<HotKey> fallback(int number) {
    const Default* found = std::ranges::find(defaults, number, &Default::number);
    return found == std::end(defaults) ? std::nullopt : std::optional(found->hotKey);
}

struct Parameters {
    std::int64_t keyCode;
    std::int64_t mask;
};

std::optional<Parameters> parameters(const Value& choice) {
    const auto listed = choice["parameters"].elements();
    if (listed.size() != 3)
        return std::nullopt;
    const auto character = listed[0].number();
    const auto keyCode = listed[1].number();
    const auto mask = listed[2].number();
    if (!character || !keyCode || !mask)
        return std::nullopt;
    return Parameters{.keyCode = *keyCode, .mask = *mask};
}

std::optional<HotKey> pressable(const Parameters& chosen) {
    const auto [keyCode, mask] = chosen;
    if (keyCode < 0 || keyCode > maxKeyCode || mask < 0)
        return std::nullopt;
    auto flags = static_cast<std::uint64_t>(mask);
    if ((flags & pressableModifiers) == 0 && std::ranges::find(function, keyCode) == function.end())
        return std::nullopt;
    flags &= keptFlags;
    if (hasKeyCode(Hotkey::arrows, keyCode))
        flags |= EventFlags::arrow;
    return HotKey{.keyCode = static_cast<std::uint16_t>(keyCode), .flags = flags};
}

} // namespace

const Value::Dictionary* entriesOf(const Value& domain) {
    return domain[domainMember].dictionary();
}

std::optional<HotKey> resolve(int number, const Value::Dictionary* preferences) {
    const Value& entry = Value::member(preferences, std::to_string(number));
    if (entry.dictionary() == nullptr)
        return fallback(number);

    const auto enabled = entry["enabled"].number();
    if (enabled == 0)
        return std::nullopt;

    const Value& choice = entry["value"];
    const auto chosen = parameters(choice);
    if (!chosen)
        return fallback(number);
    if (choice["type"].text() != "standard" || (isExplicitOnly(number) && enabled != 1))
        return std::nullopt;
    return pressable(*chosen);
}

} // namespace velmo::SymbolicHotKeys
