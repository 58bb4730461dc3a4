#pragma once

#include "core/windows/AppTarget.h"
#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Asks for a window to be moved and, if possible, resized. The first three members name its
/// application, as those of `AppTarget` do. `WindowMove::perform` carries the request out.
struct FrameRequest {
    std::int32_t pid = 0;
    std::string appId;
    std::optional<std::string> started;
    std::uint32_t windowId = 0;
    WindowBounds frame; ///< whole points

    /// The ninth argument was given: an arrangement asks for the frame, not a person's hand. That
    /// changes no check and no step; but a caller that raises a window that a person moved does not
    /// raise this one, and tells nobody if it did not land.
    bool auto_ = false;

    /// Reads the three arguments of an `AppTarget`, a window number (`WindowArgs::windowId`), x and
    /// y (`FrameArgs::coordinate`), width and height (`FrameArgs::length`), and perhaps "auto".
    /// Returns nothing if any of them is refused.
    static std::optional<FrameRequest> parse(std::span<const std::string> arguments);

    /// Returns the application as `ArrangePolicy::identityMatches` wants it.
    [[nodiscard]] AppTarget target() const {
        return {.pid = pid, .appId = appId, .started = started};
    }

    static constexpr auto fields = std::tuple_cat(
        targetFields<FrameRequest>(),
        std::tuple{field("windowId", &FrameRequest::windowId), field("frame", &FrameRequest::frame),
                   field("auto", &FrameRequest::auto_)});
    bool operator==(const FrameRequest&) const = default;
};

} // namespace velmo
