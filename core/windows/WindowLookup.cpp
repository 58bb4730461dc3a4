#include "core/windows/WindowLookup.h"

#include "core/windows/WindowMatcher.h"

#include <algorithm>

namespace velmo::WindowLookup {

bool isRequested(const WindowRequest& request, const std::optional<AppProcess>& process) {
    return process
           && ArrangePolicy::identityMatches(request.target(), process->bundleId,
                                             process->bundlePath, process->startTime);
}

std::optional<WindowTarget> listed(const WindowRequest& request,
                                   std::span<const CGWindowRow> rows) {
    const auto row = std::ranges::find_if(rows, [&](const CGWindowRow& candidate) {
        return candidate.id == request.windowId && candidate.pid == request.pid;
    });
    if (row == rows.end())
        return std::nullopt;
    return WindowTarget{
        .id = row->id, .title = row->title, .bounds = row->bounds, .onScreen = row->onScreen};
}

std::optional<Found> find(const WindowTarget& target, std::span<const AXWindowFacts> facts) {
    const auto window = WindowMatcher::resolve(target, facts);
    if (!window || facts[*window].windowId.value_or(target.id) != target.id)
        return std::nullopt;
    return Found{.window = *window, .facts = facts[*window]};
}

} // namespace velmo::WindowLookup
