#include "core/windows/AppTarget.h"

#include "core/support/Ascii.h"

#include <algorithm>
#include <utility>

namespace velmo {

std::optional<AppTarget> AppTarget::parse(std::span<const std::string> arguments) {
    if (arguments.size() != 3)
        return std::nullopt;
    auto request = TargetRequest::parse(arguments.first(arguments[2] == "-" ? 2 : 3));
    if (!request || std::ranges::any_of(request->appId, Ascii::isControl))
        return std::nullopt;
    return AppTarget{.pid = request->pid,
                     .appId = std::move(request->appId),
                     .started = std::move(request->started)};
}

} // namespace velmo
