#pragma once

#include "core/input/Hotkey.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// The keys that one phone holds down across requests, so that a later release, or a lost
/// connection, lets go of exactly what was pressed.
///
/// To hold a key: `take` its own earlier press (a repeated request must not find its own modifiers
/// held already, or nobody would release them), plan `KeyPhase::down` with `modifiers()` as those
/// already held, and record with `pressed` what `KeyPhase::fresh` names. To release: `take` or
/// `takeLast`, then plan `KeyPhase::up` with the modifiers of that press and the `modifiers()` that
/// remain.
class HeldKeys {
public:
    struct Press {
        std::vector<HotkeyModifier> modifiers; ///< that this press put down itself
        std::optional<std::uint16_t> code;     ///< absent for a press of modifiers only

        bool operator==(const Press&) const = default;
    };

    /// Tells presses apart: the modifiers in ascending order of their texts and the key, joined by
    /// "+". The order in which they were written, and game mode, make no difference.
    static std::string id(const Hotkey& hotkey);

    [[nodiscard]] bool isEmpty() const { return presses_.empty(); }

    /// Records a press as the most recent one; an earlier one of the same identifier is forgotten.
    void pressed(const Hotkey& hotkey, Press press);

    /// Removes the press of a hot key; absent when it is not held.
    std::optional<Press> take(const Hotkey& hotkey);

    /// Removes the most recent press.
    std::optional<Press> takeLast();

    /// Removes all presses, most recent first.
    std::vector<Press> takeAll();

    /// What all presses together hold, oldest first, none twice.
    [[nodiscard]] std::vector<HotkeyModifier> modifiers() const;

    bool operator==(const HeldKeys&) const = default;

private:
    std::vector<std::pair<std::string, Press>> presses_; ///< by identifier, oldest first
};

} // namespace velmo
