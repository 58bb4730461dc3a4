#include "core/windows/AppTarget.h"

#include "core/support/Ascii.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace velmo {

namespace {

constexpr std::string_view noStart = "-";

} // namespace

std::optional<AppTarget> AppTarget::parse(std::span<const std::string> arguments) {
    if (arguments.size() != 3)
        return std::nullopt;
    auto request = TargetRequest::parse(arguments.first(arguments[2] == noStart ? 2 : 3));
    if (!request || std::ranges::any_of(request->appId, Ascii::isControl))
        return std::nullopt;
    return AppTarget{.pid = request->pid,
                     .appId = std::move(request->appId),
                     .started = std::move(request->started)};
}

std::string AppTarget::startedText(std::optional<std::int64_t> startTime) {
    return startTime > 0 ? std::to_string(*startTime) : std::string(noStart);
}

} // namespace velmo
