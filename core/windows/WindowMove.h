#pragma once

#include "core/support/RawText.h"
#include "core/windows/AXWindowFacts.h"
#include "core/windows/AppProcess.h"
#include "core/windows/CGWindowRow.h"
#include "core/windows/FramePlan.h"
#include "core/windows/FrameRecord.h"
#include "core/windows/FrameRequest.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <vector>

/// Carries a `FrameRequest` out: asks all that must be asked before a window is touched, in order,
/// and looks afterwards where it is.
namespace velmo::WindowMove {

/// Why a window is not where it was asked to be. The first that applies is returned. Only the last
/// comes after the window was touched, and `noWindow` where it was closed meanwhile.
enum class Refusal {
    otherProcess, ///< the process has ended, or is not the one that the phone saw
    unmovable,    ///< `ArrangePolicy::mayArrange` refuses the running process
    noWindow,     ///< the process has no window of that number, or none that is certain to be it:
                  ///< it may have been closed before or while it was moved
    notLanded,    ///< its application did not leave it there; tell the phone the windows anew
};

using Process = AppProcess;

/// What only the platform can answer and do. Windows are named by their index in the list that
/// `windows` returned. That is asked once for each request: the caller keeps the windows themselves
/// at hand for the calls that follow.
struct Services {
    /// Absent if there is no such process.
    std::function<std::optional<Process>(std::int32_t pid)> process;

    /// Returns the whole window list, of windows on screen and off it. It is asked anew when a
    /// window has not landed.
    std::function<std::vector<CGWindowRow>()> windowList;

    /// Returns the windows of a process as accessibility reports them.
    std::function<std::vector<AXWindowFacts>(std::int32_t pid)> windows;

    std::function<bool(std::size_t window)> isResizable;
    std::function<void(std::size_t window, const FramePlan::Step& step)> apply;
    std::function<std::optional<WindowBounds>(std::size_t window)> bounds;
};

/// Moves the window, and resizes it if it can be. A window that accessibility knows under another
/// number is never touched, however alike it is. If the window has not landed the steps are applied
/// once more, from where it is then: some applications follow the first time only half the way. A
/// window that still has not is left where it is.
std::expected<FrameRecord, Refusal> perform(const FrameRequest& request, const Services& services);

} // namespace velmo::WindowMove

namespace velmo {

template<>
inline constexpr auto rawTexts<WindowMove::Refusal> =
    std::to_array<std::string_view>({"other-process", "unmovable", "no-window", "not-landed"});

} // namespace velmo
