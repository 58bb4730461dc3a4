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

/// Goes from a hot key to the events to post, on the keyboard layout that the user has, and keeps
/// the book of what is down. This is all that the verbs "hotkey", "key-down", "key-up" and
/// "release-all" ask of whoever posts events; `EventFlags::of` has the flags of each.
namespace velmo::HotkeyPlan {

/// The keys that a hot key is on a keyboard.
struct Chord {
    std::vector<HotkeyModifier> modifiers; ///< in the order of pressing
    std::optional<std::uint16_t> code;     ///< virtual key code; absent for modifiers only

    bool operator==(const Chord&) const = default;
};

/// Returns the text that a key gives in a state of the current layout; absent or empty if it gives
/// none. `command` says that the hot key has cmd: the system goes by what the layout gives with
/// Command down then, which is "q" on the Greek key that types ";". On a Mac UCKeyTranslate
/// answers, asked with `state.carbonModifierState() | (command ? 1U : 0U)`.
using Translate =
    std::function<std::optional<std::string>(std::uint16_t code, LayoutState state, bool command)>;

/// Finds the keys of a hot key. One that types a character is the key that gives it in the layout:
/// cmd+a is code 12 on a French keyboard, whose A is where a US one has Q. If no key gives it, as
/// in a layout of another script, it is the key in that place on a US keyboard, which is where such
/// layouts have their shortcuts. Every other key has one place in all layouts.
///
/// In game mode every key is the one in its place on a US keyboard, alone or with modifiers: "w" is
/// code 13, above "s", whatever it types there.
Chord chord(const Hotkey& hotkey, const Translate& translate);

/// Returns the events of a tap, a press or a release in the order in which to post them. A press is
/// put into the book; a release takes it out again and lets go of exactly what was put down then,
/// even if the layout has changed, and of nothing if the book has no such press. A press of what is
/// in the book already repeats its events, as a keyboard does; if other keys belong to it now, as
/// after a change of the layout, those of before go up first. A tap leaves the book as it is.
std::vector<KeyPhase::Step> steps(KeyPhase::Phase phase, const Hotkey& hotkey,
                                  const Translate& translate, HeldKeys& held);

/// Returns the events that release every press of the keys, or every press there is if no key is
/// named, the most recent first. A modifier goes up with the press that put it down.
std::vector<KeyPhase::Step> releases(std::span<const std::string> keys, HeldKeys& held);

} // namespace velmo::HotkeyPlan
