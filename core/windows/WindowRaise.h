#pragma once

#include "core/support/RawText.h"
#include "core/windows/AXWindowFacts.h"
#include "core/windows/AppProcess.h"
#include "core/windows/CGWindowRow.h"
#include "core/windows/FocusOutcome.h"
#include "core/windows/WindowRequest.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

/// Raises a window: asks all that must be asked before a window is touched, in the order of
/// `WindowMove`, and looks afterwards whether it is in front.
namespace velmo::WindowRaise {

/// Why a window was not raised. The first that applies is returned. Only `noWindow` may come after
/// the window was touched: when it was closed meanwhile.
enum class Refusal {
    otherProcess, ///< the process has ended, or is not the one that the phone saw
    unmovable,    ///< `ArrangePolicy::mayArrange` refuses the running process
    noWindow,     ///< the process has no window of that number, or none that is certain to be it
};

/// What is done to a window, in this order.
enum class Step {
    unminimize, ///< only if the window was minimized; on a Mac: AXMinimized is set to false
    raise,      ///< in front of its application's other windows; on a Mac: AXRaise
    activate,   ///< its application in front of all others; on a Mac: NSRunningApplication.activate
};

/// What only the platform can answer and do. A window is named by its index in the list that
/// `windows` returned. A request asks for that list once: the caller keeps the windows themselves
/// at hand for the calls that follow. The first three are those of `WindowMove::Services`.
struct Services {
    /// Returns nothing if the process does not exist.
    std::function<std::optional<AppProcess>(std::int32_t pid)> process;

    /// Returns the whole window list, from front to back, of windows on screen and off it. Asked
    /// anew after each attempt.
    std::function<std::vector<CGWindowRow>()> windowList;

    /// Returns the windows of a process as accessibility reports them.
    std::function<std::vector<AXWindowFacts>(std::int32_t pid)> windows;

    std::function<void(std::size_t window, Step step)> apply;

    /// Waits until the system can have followed the steps, some tenths of a second. On a Mac an
    /// application comes to the front some time after the call that activates it has returned.
    std::function<void()> settle;

    /// Returns the process identifier of the frontmost application, if any is known.
    std::function<std::optional<std::int32_t>()> frontmostPid;
};

/// Raises the window. A window that accessibility knows under another number is never touched,
/// however alike it is. `raised` says what `WindowRecord::front` will say when the phone is next
/// told the windows. If the window is not in front after the first attempt, every step is done once
/// more; if it still is not, `raised` is false. `minimized` is always present.
std::expected<FocusOutcome, Refusal> perform(const WindowRequest& request,
                                             const Services& services);

} // namespace velmo::WindowRaise

namespace velmo {

template<>
inline constexpr auto rawTexts<WindowRaise::Refusal> =
    std::to_array<std::string_view>({"other-process", "unmovable", "no-window"});

template<>
inline constexpr auto rawTexts<WindowRaise::Step> =
    std::to_array<std::string_view>({"unminimize", "raise", "activate"});

} // namespace velmo
