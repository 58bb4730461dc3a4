#include "core/windows/FrameArgs.h"

#include "core/support/Decimal.h"

#include <cstddef>

namespace velmo::FrameArgs {

namespace {

constexpr std::size_t maxCharacters = 7;

} // namespace

std::optional<std::int32_t> coordinate(std::string_view text) {
    if (text.size() > maxCharacters)
        return std::nullopt;
    return Decimal::parse<std::int32_t>(text, {.min = -limit, .max = limit});
}

std::optional<std::int32_t> length(std::string_view text) {
    const auto value = coordinate(text);
    return value >= 1 ? value : std::nullopt;
}

} // namespace velmo::FrameArgs
