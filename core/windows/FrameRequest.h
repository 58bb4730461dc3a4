#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Asks for a window to be moved and, if it can be, resized.
struct FrameRequest {
    std::int32_t pid = 0; ///< this and the next two: the application, see `AppTarget`
    std::string appId;
    std::optional<std::string> started;
    std::uint32_t windowId = 0;
    WindowBounds frame; ///< whole points
    bool auto_ = false; ///< the ninth argument was given

    /// The three arguments of an `AppTarget`, a window number (`WindowArgs::windowId`), x and y
    /// (`FrameArgs::coordinate`), width and height (`FrameArgs::length`), and perhaps "auto".
    static std::optional<FrameRequest> parse(std::span<const std::string> arguments);

    static constexpr auto fields = std::tuple{
        field("pid", &FrameRequest::pid),         field("appId", &FrameRequest::appId),
        field("started", &FrameRequest::started), field("windowId", &FrameRequest::windowId),
        field("frame", &FrameRequest::frame),     field("auto", &FrameRequest::auto_)};
    bool operator==(const FrameRequest&) const = default;
};

} // namespace velmo
