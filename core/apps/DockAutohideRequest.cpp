#include "core/apps/DockAutohideRequest.h"

namespace velmo {

std::optional<DockAutohideRequest> DockAutohideRequest::parse(std::span<const std::string> args) {
    if (args.size() == 1 && args[0] == "get")
        return DockAutohideRequest{.action = Get{}};
    if (args.size() == 2 && args[0] == "set" && (args[1] == "0" || args[1] == "1"))
        return DockAutohideRequest{.action = Set{.autohide = args[1] == "1"}};
    return std::nullopt;
}

} // namespace velmo
