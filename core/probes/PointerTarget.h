#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Where the pointer is to be put, in screen points.
struct PointerTarget {
    std::int64_t x = 0;
    std::int64_t y = 0;

    static constexpr std::int64_t limit = 100'000; ///< of either coordinate, in both directions

    /// Reads the two words after the program's own name: one sign at most, ASCII digits, no blanks.
    /// Absent for wrong usage.
    static std::optional<PointerTarget> parse(std::span<const std::string> arguments);

    bool operator==(const PointerTarget&) const = default;
};

} // namespace velmo
