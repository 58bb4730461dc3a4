#include "core/input/SymbolicHotKeys.h"

#include "core/input/Hotkey.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace velmo::SymbolicHotKeys {

namespace {

constexpr std::uint64_t pressableModifiers =
    EventFlags::shift | EventFlags::control | EventFlags::option | EventFlags::command;
constexpr std::uint64_t arrowFlags = EventFlags::numericPad | EventFlags::secondaryFn;
constexpr std::uint64_t keptFlags = pressableModifiers | arrowFlags;

constexpr std::int64_t highestKeyCode = 127;
constexpr std::int64_t firstArrow = 123;
constexpr std::int64_t lastArrow = 126;

// What is left out are caps lock, help and the bits that tell a left key from a right one.
static_assert(pressableModifiers == 0x1E0000 && keptFlags == 0xBE0000);

bool isExplicitOnly(int number) {
    return std::ranges::find(explicitOnly, number) != std::end(explicitOnly);
}

std::optional<HotKey> fallback(int number) {
    const Default* found = std::ranges::find(defaults, number, &Default::number);
    if (isExplicitOnly(number) || found == std::end(defaults))
        return std::nullopt;
    return found->hotKey;
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
    if (keyCode < 0 || keyCode > highestKeyCode || mask < 0)
        return std::nullopt;
    auto flags = static_cast<std::uint64_t>(mask);
    if ((flags & pressableModifiers) == 0 && !hasKeyCode(Hotkey::functionKeys, keyCode))
        return std::nullopt;
    flags &= keptFlags;
    if (keyCode >= firstArrow && keyCode <= lastArrow)
        flags |= arrowFlags;
    return HotKey{.keyCode = static_cast<std::uint16_t>(keyCode), .flags = flags};
}

} // namespace

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
