#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace velmo {

/// A keyboard shortcut as the system's preferences give it.
struct HotKey {
    std::uint16_t keyCode = 0; ///< virtual key code
    std::uint64_t flags = 0;   ///< `EventFlags`

    bool operator==(const HotKey&) const = default;
};

/// The modifier bits of the platform's keyboard events.
namespace EventFlags {

inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t numericPad = 0x200000; ///< arrow keys carry it too
inline constexpr std::uint64_t secondaryFn = 0x800000;

} // namespace EventFlags

/// Opens an application or a folder.
struct OpenAction {
    std::string path;
    std::vector<std::string> arguments;

    bool operator==(const OpenAction&) const = default;
};

/// Clicks the clock in the menu bar.
struct PressClockAction {
    bool operator==(const PressClockAction&) const = default;
};

struct NoAction {
    bool operator==(const NoAction&) const = default;
};

/// How a gesture is carried out.
using GestureAction = std::variant<HotKey, OpenAction, PressClockAction, NoAction>;

} // namespace velmo
