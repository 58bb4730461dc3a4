#pragma once

#include "core/windows/AXWindowFacts.h"
#include "core/windows/AppProcess.h"
#include "core/windows/ArrangePolicy.h"
#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowRequest.h"
#include "core/windows/WindowTarget.h"

#include <cstddef>
#include <expected>
#include <optional>
#include <span>
#include <utility>

/// Finds the window that a request names, and asks all that must be asked before it is touched.
/// `WindowMove` and `WindowRaise` begin with this.
namespace velmo::WindowLookup {

/// A window of a process, among those that accessibility reports.
struct Found {
    std::size_t window = 0; ///< index in the list of the process's windows
    AXWindowFacts facts;    ///< before it was touched
};

/// Tells whether the process is the one that the request was made for.
bool isRequested(const WindowRequest& request, const std::optional<AppProcess>& process);

/// Returns the window as the list describes it. The system uses a window number again, so the owner
/// must match too.
std::optional<WindowTarget> listed(const WindowRequest& request, std::span<const CGWindowRow> rows);

/// Returns the target's window among those of its process. A window that looks like it but is known
/// to have another number is a window that is left when the target was closed after it was listed.
std::optional<Found> find(const WindowTarget& target, std::span<const AXWindowFacts> facts);

/// Does all of it, in the order of the refusals: `otherProcess`, `unmovable`, `noWindow`. Calls
/// `process`, `windowList` and `windows` of the services at most once each.
template<class Refusal, class Services>
std::expected<Found, Refusal> perform(const WindowRequest& request, const Services& services) {
    const std::optional<AppProcess> process = services.process(request.pid);
    if (!isRequested(request, process))
        return std::unexpected(Refusal::otherProcess);
    if (!ArrangePolicy::mayArrange(process->bundleId))
        return std::unexpected(Refusal::unmovable);
    const auto target = listed(request, services.windowList());
    auto found = target ? find(*target, services.windows(request.pid)) : std::nullopt;
    if (!found)
        return std::unexpected(Refusal::noWindow);
    return *std::move(found);
}

} // namespace velmo::WindowLookup
