#pragma once

#include <cstdint>

/// The modifier bits of the platform's keyboard events, as its event flags number them.
namespace velmo::EventFlags {

inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t numericPad = 0x200000;
inline constexpr std::uint64_t secondaryFn = 0x800000;

/// Every event of an arrow key carries both.
inline constexpr std::uint64_t arrow = numericPad | secondaryFn;

} // namespace velmo::EventFlags
