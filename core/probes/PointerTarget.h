#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Tells where the pointer is to be placed, in screen points. Clicks there are in
/// core/input/MouseClickRequest.h.
struct PointerTarget {
    std::int64_t x = 0;
    std::int64_t y = 0;

    static constexpr std::int64_t limit = 100'000; ///< of the absolute value of either coordinate

    /// Reads exactly two arguments, x and y (`Decimal::parseSigned`). Absent for wrong usage.
    static std::optional<PointerTarget> parse(std::span<const std::string> arguments);

    bool operator==(const PointerTarget&) const = default;
};

} // namespace velmo
