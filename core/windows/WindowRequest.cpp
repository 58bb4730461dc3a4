#include "core/windows/WindowRequest.h"

#include "core/windows/WindowArgs.h"

#include <utility>

namespace velmo {

std::optional<WindowRequest> WindowRequest::parse(std::span<const std::string> arguments) {
    if (arguments.size() != argumentCount)
        return std::nullopt;
    auto target = AppTarget::parse(arguments.first(argumentCount - 1));
    const auto windowId = WindowArgs::windowId(arguments.back());
    if (!target || !windowId)
        return std::nullopt;
    return WindowRequest{.pid = target->pid,
                         .appId = std::move(target->appId),
                         .started = std::move(target->started),
                         .windowId = *windowId};
}

std::optional<std::vector<std::string>> WindowRequest::words(const WindowRecord& window) {
    std::vector arguments{std::to_string(window.pid), window.appId, window.started,
                          std::to_string(window.id)};
    return parse(arguments) ? std::optional(std::move(arguments)) : std::nullopt;
}

} // namespace velmo
