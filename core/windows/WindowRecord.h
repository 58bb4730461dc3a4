#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <string>

namespace velmo {

/// Describes a window to the phone, which shows a list of windows.
struct WindowRecord {
    std::uint32_t id = 0; ///< window number
    std::int32_t pid = 0; ///< of the owner
    std::string app;      ///< name of the owner
    std::string appId;    ///< bundle identifier of the owner; empty if unknown
    std::string title;    ///< empty if it has none
    WindowBounds bounds;
    bool onScreen = false;
    bool minimized = false;
    bool front = false;  ///< the front window of the frontmost application
    std::string started; ///< `AppTarget::startedText`, which the phone sends back in requests

    static constexpr auto fields = std::tuple{field("id", &WindowRecord::id),
                                              field("pid", &WindowRecord::pid),
                                              field("app", &WindowRecord::app),
                                              field("appId", &WindowRecord::appId),
                                              field("title", &WindowRecord::title),
                                              field("bounds", &WindowRecord::bounds),
                                              field("onScreen", &WindowRecord::onScreen),
                                              field("minimized", &WindowRecord::minimized),
                                              field("front", &WindowRecord::front),
                                              field("started", &WindowRecord::started)};
    bool operator==(const WindowRecord&) const = default;
};

} // namespace velmo
