#include "core/windows/FrameArgs.h"

#include "core/support/Ascii.h"

#include <cstddef>

namespace velmo::FrameArgs {

namespace {

constexpr std::size_t longestCoordinate = 7;

} // namespace

std::optional<std::int32_t> coordinate(std::string_view text) {
    if (text.size() > longestCoordinate)
        return std::nullopt;
    const bool negative = text.starts_with('-');
    const auto magnitude = Ascii::decimal<std::int32_t>(text.substr(negative ? 1 : 0));
    if (!magnitude || *magnitude > limit)
        return std::nullopt;
    return negative ? -*magnitude : *magnitude;
}

std::optional<std::int32_t> length(std::string_view text) {
    const auto value = coordinate(text);
    return value >= 1 ? value : std::nullopt;
}

} // namespace velmo::FrameArgs
