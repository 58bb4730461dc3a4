#pragma once

#include "core/windows/AppTarget.h"
#include "core/windows/WindowBounds.h"
#include "core/windows/WindowRecord.h"
#include "core/windows/WindowRequest.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmo {

/// Asks for a window to be moved and, if possible, resized. The first four members name the window,
/// as those of `WindowRequest` do. `WindowMove::perform` carries the request out.
struct FrameRequest {
    std::int32_t pid = 0;
    std::string appId;
    std::optional<std::string> started;
    std::uint32_t windowId = 0;
    WindowBounds frame; ///< whole points

    /// The ninth argument was given: an arrangement asks for the frame, not a person's hand. The
    /// checks and the steps are the same; but a caller that raises a window that a person moved
    /// does not raise this one, and keeps silent if it did not land.
    bool auto_ = false;

    /// Reads the four arguments of a `WindowRequest`, x and y (`FrameArgs::coordinate`), width and
    /// height (`FrameArgs::length`), and perhaps "auto". Returns nothing if any of them is refused.
    static std::optional<FrameRequest> parse(std::span<const std::string> arguments);

    /// Returns the arguments that ask for the frame for the window of the record, with each number
    /// of the frame rounded to whole points: `parse` accepts them. An arrangement appends "auto".
    /// Returns nothing if `WindowRequest::words` does, for a number beyond `FrameArgs::limit` or
    /// "not a number", and for a width or height that is rounded to less than 1.
    static std::optional<std::vector<std::string>> words(const WindowRecord& window,
                                                         const WindowBounds& frame);

    /// Returns the window as `WindowRaise::perform` wants it.
    [[nodiscard]] WindowRequest window() const {
        return {.pid = pid, .appId = appId, .started = started, .windowId = windowId};
    }

    /// Returns the application as `ArrangePolicy::identityMatches` wants it.
    [[nodiscard]] AppTarget target() const { return window().target(); }

    static constexpr auto fields = std::tuple_cat(
        targetFields<FrameRequest>(),
        std::tuple{field("windowId", &FrameRequest::windowId), field("frame", &FrameRequest::frame),
                   field("auto", &FrameRequest::auto_)});
    bool operator==(const FrameRequest&) const = default;
};

} // namespace velmo
