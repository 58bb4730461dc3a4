#pragma once

#include "core/input/KeyPhase.h"

#include <cstdint>

/// The modifier bits of the platform's keyboard events, as its event flags number them.
namespace velmo::EventFlags {

inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t numericPad = 0x200000;
inline constexpr std::uint64_t secondaryFn = 0x800000;

/// The bits that every event of an arrow key carries.
inline constexpr std::uint64_t arrow = numericPad | secondaryFn;

/// Returns the bit of a modifier.
std::uint64_t of(HotkeyModifier modifier);

/// Returns the flags to post the event with: the modifiers that are down after it, and the bits
/// that a keyboard sends with the key itself. These are `arrow` with arrow keys, `numericPad` with
/// the keys of the numeric keypad, and `secondaryFn` with the function keys, home, end, page up,
/// page down and delete. The flags must be complete, because flags that are set replace those that
/// the system would have put there.
std::uint64_t of(const KeyPhase::Step& step);

} // namespace velmo::EventFlags
