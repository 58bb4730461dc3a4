#include "core/windows/CGWindowRow.h"

#include <cmath>
#include <limits>
#include <string_view>

namespace velmo {

namespace {

/// The member as one of Value's readers answers it; absent too when there is no such member.
template<class Result>
std::optional<Result> read(const Value* entry, std::string_view name,
                           std::optional<Result> (Value::*reader)() const) {
    const Value* found = entry->member(name);
    return found == nullptr ? std::nullopt : (found->*reader)();
}

/// A number that names something: from 1 up, and no boolean, which the platform would take for 1.
template<class Integer>
std::optional<Integer> identifier(const Value& entry, std::string_view name) {
    const auto number = read(&entry, name, &Value::number);
    if (!number || *number < 1 || *number > std::numeric_limits<Integer>::max()
        || read(&entry, name, &Value::boolean))
        return std::nullopt;
    return static_cast<Integer>(*number);
}

std::optional<double> finite(const Value* entry, std::string_view name) {
    const auto real = read(entry, name, &Value::real);
    return real && std::isfinite(*real) ? real : std::nullopt;
}

std::optional<WindowBounds> parseBounds(const Value* entry) {
    if (entry == nullptr)
        return std::nullopt;
    const auto x = finite(entry, "X");
    const auto y = finite(entry, "Y");
    const auto width = finite(entry, "Width");
    const auto height = finite(entry, "Height");
    if (!x || !y || !width || !height)
        return std::nullopt;
    return WindowBounds{.x = *x, .y = *y, .width = *width, .height = *height};
}

} // namespace

std::optional<CGWindowRow> CGWindowRow::parse(const Value& entry) {
    const auto id = identifier<std::uint32_t>(entry, "kCGWindowNumber");
    const auto pid = identifier<std::int32_t>(entry, "kCGWindowOwnerPID");
    const auto bounds = parseBounds(entry.member("kCGWindowBounds"));
    if (!id || !pid || !bounds)
        return std::nullopt;

    const CGWindowRow defaults;
    const auto title = read(&entry, "kCGWindowName", &Value::text).value_or("");
    return CGWindowRow{
        .id = *id,
        .pid = *pid,
        .owner = std::string(read(&entry, "kCGWindowOwnerName", &Value::text).value_or("")),
        .title = title.empty() ? std::nullopt : std::optional<std::string>(title),
        .layer = read(&entry, "kCGWindowLayer", &Value::number).value_or(defaults.layer),
        .alpha = read(&entry, "kCGWindowAlpha", &Value::real).value_or(defaults.alpha),
        .bounds = *bounds,
        .onScreen = read(&entry, "kCGWindowIsOnscreen", &Value::truth).value_or(defaults.onScreen)};
}

} // namespace velmo
