#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Reads whole numbers of points from arguments.
namespace velmo::FrameArgs {

inline constexpr std::int32_t limit = 100000; ///< of the absolute value

/// Reads 1 to 7 characters: ASCII digits, perhaps with a "-" before them. Leading zeros are
/// accepted.
std::optional<std::int32_t> coordinate(std::string_view text);

/// Reads a coordinate and returns it if it is at least 1.
std::optional<std::int32_t> length(std::string_view text);

} // namespace velmo::FrameArgs
