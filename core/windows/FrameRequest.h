#pragma once

#include "core/apps/TargetRequest.h"
#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Asks for a window to be moved and, if possible, resized. The first three members name its
/// application, as those of `AppTarget` do.
struct FrameRequest {
    std::int32_t pid = 0;
    std::string appId;
    std::optional<std::string> started;
    std::uint32_t windowId = 0;
    WindowBounds frame; ///< whole points
    bool auto_ = false; ///< the ninth argument was given

    /// Reads the three arguments of an `AppTarget`, a window number (`WindowArgs::windowId`), x and
    /// y (`FrameArgs::coordinate`), width and height (`FrameArgs::length`), and perhaps "auto".
    /// Returns nothing if any of them is refused.
    static std::optional<FrameRequest> parse(std::span<const std::string> arguments);

    static constexpr auto fields = std::tuple_cat(
        targetFields<FrameRequest>(),
        std::tuple{field("windowId", &FrameRequest::windowId), field("frame", &FrameRequest::frame),
                   field("auto", &FrameRequest::auto_)});
    bool operator==(const FrameRequest&) const = default;
};

} // namespace velmo
