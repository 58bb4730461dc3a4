#include "core/windows/WindowMove.h"

#include "core/windows/ArrangePolicy.h"
#include "core/windows/WindowMatcher.h"

#include <algorithm>

namespace velmo::WindowMove {

namespace {

constexpr int attempts = 2;

std::optional<Refusal> refusal(const FrameRequest& request, const std::optional<Process>& process) {
    if (!process
        || !ArrangePolicy::identityMatches(request.target(), process->bundleId, process->bundlePath,
                                           process->startTime))
        return Refusal::otherProcess;
    if (!ArrangePolicy::mayArrange(process->bundleId))
        return Refusal::unmovable;
    return std::nullopt;
}

/// Returns the window as the list describes it. A number is used again, so the owner must match.
std::optional<WindowTarget> listed(const FrameRequest& request,
                                   const std::vector<CGWindowRow>& rows) {
    const auto row = std::ranges::find_if(rows, [&](const CGWindowRow& candidate) {
        return candidate.id == request.windowId && candidate.pid == request.pid;
    });
    if (row == rows.end())
        return std::nullopt;
    return WindowTarget{
        .id = row->id, .title = row->title, .bounds = row->bounds, .onScreen = row->onScreen};
}

/// Returns the target's window among those of its process. One that looks like it but is known to
/// have another number is a window that is left when the target was closed after it was listed.
std::optional<std::size_t> found(const WindowTarget& target,
                                 const std::vector<AXWindowFacts>& facts) {
    const auto window = WindowMatcher::resolve(target, facts);
    return window && facts[*window].windowId.value_or(target.id) == target.id ? window
                                                                              : std::nullopt;
}

bool sameSize(const WindowBounds& a, const WindowBounds& b) {
    return a.width == b.width && a.height == b.height;
}

} // namespace

std::expected<FrameRecord, Refusal> perform(const FrameRequest& request, const Services& services) {
    if (const auto refused = refusal(request, services.process(request.pid)))
        return std::unexpected(*refused);

    const auto target = listed(request, services.windowList());
    if (!target)
        return std::unexpected(Refusal::noWindow);
    const auto facts = services.windows(request.pid);
    const auto window = found(*target, facts);
    if (!window)
        return std::unexpected(Refusal::noWindow);

    const bool resizable = services.isResizable(*window);
    const auto before = facts[*window].bounds;
    auto now = before;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        for (const FramePlan::Step& step : FramePlan::steps(now, request.frame, resizable))
            services.apply(*window, step);
        now = services.bounds(*window);
        if (FramePlan::landed(now, request.frame, resizable))
            return FrameRecord{.x = now->x,
                               .y = now->y,
                               .width = now->width,
                               .height = now->height,
                               .resized = before ? !sameSize(*before, *now) : resizable};
        if (!listed(request, services.windowList()))
            return std::unexpected(Refusal::noWindow);
    }
    return std::unexpected(Refusal::notLanded);
}

} // namespace velmo::WindowMove
