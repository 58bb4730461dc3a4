#pragma once

#include "core/input/HeldKeys.h"
#include "core/input/Hotkey.h"
#include "core/input/KeyPhase.h"
#include "core/input/LayoutState.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Turns a hot key into the events to post on the user's keyboard layout, and records in `HeldKeys`
/// which keys are down. For the verbs "hotkey", "key-down", "key-up" and "release-all" the caller
/// only posts these events, with the flags that `EventFlags::of` returns for each.
namespace velmo::HotkeyPlan {

/// The keys that a hot key is on a keyboard.
struct Chord {
    std::vector<HotkeyModifier> modifiers; ///< in the order of pressing
    std::optional<std::uint16_t> code;     ///< virtual key code; absent for modifiers only

    bool operator==(const Chord&) const = default;
};

/// Returns the text that a key gives in a state of the current layout; absent or empty if it gives
/// none. `command` is set if the hot key has cmd: the system then goes by the text that the layout
/// gives with Command down, such as "q" on the Greek key that types ";". On a Mac UCKeyTranslate
/// returns the text, called with the modifier state
/// `state.carbonModifierState() | (command ? 1U : 0U)`.
using Translate =
    std::function<std::optional<std::string>(std::uint16_t code, LayoutState state, bool command)>;

/// Finds the keys of a hot key. A key that types a character is the one that gives this character
/// in the layout: cmd+a is code 12 on a French keyboard, which has A where a US keyboard has Q. If
/// no key gives the character, as in a layout of another script, the key is the one in its place on
/// a US keyboard, where such layouts have their shortcuts. Every other key has one place in all
/// layouts.
///
/// In game mode every key is the one in its place on a US keyboard, alone or with modifiers: "w" is
/// code 13, above "s", whatever it types there.
Chord chord(const Hotkey& hotkey, const Translate& translate);

/// Returns the events of a tap, a press or a release in the order in which to post them. A tap
/// leaves `held` as it is. A press is recorded in `held`. A release removes that press and releases
/// exactly the keys that it put down, even if the layout has changed since; a release without a
/// press has no events.
///
/// A second press of the same hot key repeats the events, as a keyboard does. If the hot key has
/// other keys by then, as after a change of the layout, the earlier ones go up first.
std::vector<KeyPhase::Step> steps(KeyPhase::Phase phase, const Hotkey& hotkey,
                                  const Translate& translate, HeldKeys& held);

/// Returns the events that release every press of the keys, or every press if no key is named, the
/// most recent first, and removes these presses from `held`. A modifier goes up with the press that
/// put it down.
std::vector<KeyPhase::Step> releases(std::span<const std::string> keys, HeldKeys& held);

} // namespace velmo::HotkeyPlan
