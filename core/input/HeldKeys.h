#pragma once

#include "core/input/Hotkey.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// The keys that one phone has pressed and not released yet. It is kept from one request to the
/// next, so that a later release, or the end of the connection, releases exactly what was pressed.
/// It posts no events itself: `KeyPhase` plans them, and the owner posts the plan.
///
/// Each modifier belongs to the press that put it down. A later press that needs it too leaves it
/// alone, both when it is pressed and when it is released. To press a hot key:
///
///     held.take(hotkey); // a repeated press must not take its own modifiers for another's
///     const auto others = held.modifiers();
///     post(KeyPhase::steps(KeyPhase::down, hotkey.modifiers, code, others));
///     held.pressed(hotkey, {KeyPhase::fresh(hotkey.modifiers, others), code});
///
/// To release it, or whatever `takeLast` returns:
///
///     if (const auto press = held.take(hotkey))
///         post(KeyPhase::steps(KeyPhase::up, press->modifiers, press->code, held.modifiers()));
class HeldKeys {
public:
    struct Press {
        std::vector<HotkeyModifier> modifiers; ///< those that this press put down itself
        std::optional<std::uint16_t> code;     ///< absent for a press of modifiers only

        bool operator==(const Press&) const = default;
    };

    /// Returns the identifier of a hot key's press: the raw texts of its modifiers in ascending
    /// order and the key, joined by "+", such as "cmd+shift+k", or "shift+" without a key. Requests
    /// that differ in the order of modifiers or in game mode have the same identifier.
    static std::string id(const Hotkey& hotkey);

    [[nodiscard]] bool isEmpty() const { return presses_.empty(); }

    /// Records a press as the most recent one. An earlier press of the same identifier is replaced.
    void pressed(const Hotkey& hotkey, Press press);

    /// Removes and returns the press of a hot key; absent if it is not recorded.
    std::optional<Press> take(const Hotkey& hotkey);

    /// Removes and returns the most recent press; absent if there is none.
    std::optional<Press> takeLast();

    /// Removes and returns all presses, the most recent one first.
    std::vector<Press> takeAll();

    /// Returns the modifiers of all presses together, those of the oldest press first, each once.
    [[nodiscard]] std::vector<HotkeyModifier> modifiers() const;

    bool operator==(const HeldKeys&) const = default;

private:
    std::vector<std::pair<std::string, Press>> presses_; ///< by identifier, oldest first
};

} // namespace velmo
