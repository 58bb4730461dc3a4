#pragma once

#include "core/input/Hotkey.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// The keys that one phone has pressed and not released yet. The object is kept from one request to
/// the next, so that a later release, or the end of the connection, releases exactly the keys that
/// were pressed. The object itself posts no events: `KeyPhase` plans them, and the owner posts the
/// plan.
///
/// A modifier belongs to the press that put it down. A later press that needs the same modifier
/// leaves it alone, both when the press begins and when it is released. `HotkeyPlan` plans presses
/// and releases and records them here; a caller that plans without it records the modifiers that
/// `KeyPhase::fresh` returns.
class HeldKeys {
public:
    struct Press {
        std::vector<HotkeyModifier> modifiers; ///< those that this press put down itself
        std::optional<std::uint16_t> code;     ///< absent for a press of modifiers only

        bool operator==(const Press&) const = default;
    };

    /// A press that was taken to be released, and the modifiers that stay down for others:
    /// `KeyPhase::steps(KeyPhase::up, press.modifiers, press.code, others)` is the plan.
    struct Release {
        Press press;
        std::vector<HotkeyModifier> others;

        bool operator==(const Release&) const = default;
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

    /// Removes and returns the most recent press; absent if no press is recorded.
    std::optional<Press> takeLast();

    /// Removes and returns all presses, the most recent one first. Nothing is recorded afterwards,
    /// so that `modifiers` can't tell any more what stays down after each release: to plan the
    /// releases, use `takeRelease`.
    std::vector<Press> takeAll();

    /// Removes and returns the most recent press of a key with one of the names, whatever its
    /// modifiers are; without names, the most recent press of all. Absent if no such press is
    /// recorded. For "release-all", the caller passes the names that `InputDaemonWire::releaseKeys`
    /// returns and repeats the call until the result is absent.
    std::optional<Release> takeRelease(std::span<const std::string> keys = {});

    /// Returns the modifiers of all presses together, those of the oldest press first, each once.
    [[nodiscard]] std::vector<HotkeyModifier> modifiers() const;

    bool operator==(const HeldKeys&) const = default;

private:
    std::vector<std::pair<std::string, Press>> presses_; ///< by identifier, oldest first
};

} // namespace velmo
