#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Whole numbers of points, as arguments.
namespace velmo::FrameArgs {

/// The largest coordinate, either side of 0.
inline constexpr std::int32_t limit = 100000;

/// ASCII digits, perhaps after a "-", at most 7 characters in all; leading zeros are let pass.
std::optional<std::int32_t> coordinate(std::string_view text);

/// A coordinate of at least 1.
std::optional<std::int32_t> length(std::string_view text);

} // namespace velmo::FrameArgs
