#include "core/probes/PointerTarget.h"

#include "core/support/Decimal.h"

#include <string_view>

namespace velmo {

namespace {

std::optional<std::int64_t> coordinate(std::string_view word) {
    constexpr std::int64_t limit = PointerTarget::limit;
    return Decimal::parseSigned<std::int64_t>(word, {.min = -limit, .max = limit});
}

} // namespace

std::optional<PointerTarget> PointerTarget::parse(std::span<const std::string> arguments) {
    if (arguments.size() != 2)
        return std::nullopt;
    const auto x = coordinate(arguments[0]);
    const auto y = coordinate(arguments[1]);
    if (!x || !y)
        return std::nullopt;
    return PointerTarget{.x = *x, .y = *y};
}

} // namespace velmo
