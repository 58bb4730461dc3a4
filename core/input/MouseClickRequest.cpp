#include "core/input/MouseClickRequest.h"

namespace velmo {

namespace {

constexpr std::size_t longestJson = 256; // bytes
constexpr std::int64_t mostClicks = 2;

} // namespace

std::optional<MouseClickRequest> MouseClickRequest::parse(std::string_view json) {
    if (json.size() > longestJson)
        return std::nullopt;
    const auto document = JsonDocument::parse(json);
    const auto object = document.and_then(&JsonDocument::object);
    if (!object || !object->hasOnly({"button", "count"}))
        return std::nullopt;
    const auto button = object->member("button").and_then(decodeJson<Button>);
    const auto given = object->member("count");
    const auto count = given ? given->integer() : 1;
    if (!button || !count || *count < 1 || *count > mostClicks)
        return std::nullopt;
    return MouseClickRequest{.button = *button, .count = *count};
}

std::vector<MouseClickRequest::Step> MouseClickRequest::steps() const {
    std::vector<Step> plan;
    for (std::int64_t click = 1; click <= count; ++click) {
        plan.push_back({.down = true, .clickState = click});
        plan.push_back({.down = false, .clickState = click});
    }
    return plan;
}

} // namespace velmo
