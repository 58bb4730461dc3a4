#include "core/windows/WindowRaise.h"

#include "core/windows/WindowList.h"
#include "core/windows/WindowLookup.h"

#include <algorithm>
#include <span>

namespace velmo::WindowRaise {

namespace {

constexpr std::int64_t attempts = 2;
constexpr std::int32_t noPid = 0;

/// Tells whether the phone would be told that the window is the front one.
bool isFront(const WindowRequest& request, std::span<const CGWindowRow> rows,
             std::optional<std::int32_t> frontmostPid) {
    const auto ownerOf = [&](std::int32_t pid) {
        return WindowList::Owner{.isRegularApp = pid == request.pid};
    };
    return std::ranges::any_of(
        WindowList::records(rows, noPid, frontmostPid, ownerOf),
        [&](const WindowRecord& record) { return record.front && record.id == request.windowId; });
}

} // namespace

std::expected<FocusOutcome, Refusal> perform(const WindowRequest& request,
                                             const Services& services) {
    const auto found = WindowLookup::perform<Refusal>(request, services);
    if (!found)
        return std::unexpected(found.error());

    FocusOutcome outcome{.minimized = found->facts.minimized};
    while (!outcome.raised && outcome.attempts < attempts) {
        for (const Step step : allCases<Step>) {
            if (step != Step::unminimize || found->facts.minimized)
                services.apply(found->window, step);
        }
        services.settle();
        ++outcome.attempts;
        const auto rows = services.windowList();
        if (!WindowLookup::listed(request, rows))
            return std::unexpected(Refusal::noWindow);
        outcome.raised = isFront(request, rows, services.frontmostPid());
    }
    return outcome;
}

} // namespace velmo::WindowRaise
