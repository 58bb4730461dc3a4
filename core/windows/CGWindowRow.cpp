#include "core/windows/CGWindowRow.h"

#include <cmath>
#include <limits>
#include <string_view>

namespace velmo {

namespace {

/// Returns a number from 1 up. A boolean is refused, although the platform would read it as 1.
template<class Integer>
std::optional<Integer> identifier(const Value& value) {
    const auto number = value.number();
    if (!number || *number < 1 || *number > std::numeric_limits<Integer>::max() || value.boolean())
        return std::nullopt;
    return static_cast<Integer>(*number);
}

std::optional<double> finite(const Value& value) {
    const auto real = value.real();
    return real && std::isfinite(*real) ? real : std::nullopt;
}

std::optional<WindowBounds> parseBounds(const Value& entry) {
    const auto x = finite(entry["X"]);
    const auto y = finite(entry["Y"]);
    const auto width = finite(entry["Width"]);
    const auto height = finite(entry["Height"]);
    if (!x || !y || !width || !height)
        return std::nullopt;
    return WindowBounds{.x = *x, .y = *y, .width = *width, .height = *height};
}

} // namespace

std::optional<CGWindowRow> CGWindowRow::parse(const Value& entry) {
    const auto id = identifier<std::uint32_t>(entry["kCGWindowNumber"]);
    const auto pid = identifier<std::int32_t>(entry["kCGWindowOwnerPID"]);
    const auto bounds = parseBounds(entry["kCGWindowBounds"]);
    if (!id || !pid || !bounds)
        return std::nullopt;

    const CGWindowRow defaults;
    const auto title = entry["kCGWindowName"].text().value_or("");
    return CGWindowRow{.id = *id,
                       .pid = *pid,
                       .owner = std::string(entry["kCGWindowOwnerName"].text().value_or("")),
                       .title = title.empty() ? std::nullopt : std::optional<std::string>(title),
                       .layer = entry["kCGWindowLayer"].number().value_or(defaults.layer),
                       .alpha = entry["kCGWindowAlpha"].real().value_or(defaults.alpha),
                       .bounds = *bounds,
                       .onScreen =
                           entry["kCGWindowIsOnscreen"].truth().value_or(defaults.onScreen)};
}

} // namespace velmo
