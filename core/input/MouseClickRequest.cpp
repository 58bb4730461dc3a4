#include "core/input/MouseClickRequest.h"

namespace velmo {

namespace {

constexpr std::size_t maxMouseClickJson = 256; // bytes
constexpr std::int64_t maxClicks = 2;

} // namespace

std::optional<MouseClickRequest> MouseClickRequest::parse(std::string_view json) {
    const auto request = decodeRecordExactly<MouseClickRequest>(json, maxMouseClickJson);
    return request && request->count >= 1 && request->count <= maxClicks ? request : std::nullopt;
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
