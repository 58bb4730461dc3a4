#pragma once

#include "core/windows/WindowBounds.h"

#include <cstdint>
#include <string>

namespace velmo {

/// A window in the list that the phone shows.
struct WindowRecord {
    std::uint32_t id = 0; ///< window number
    std::int32_t pid = 0; ///< of the owner
    std::string app;      ///< the owner's name
    std::string appId;    ///< the owner's bundle identifier; empty when unknown
    std::string title;    ///< empty when it has none
    WindowBounds bounds;
    bool onScreen = false;
    bool minimized = false;
    bool front = false;  ///< the front window of the frontmost application
    std::string started; ///< when the owner was started, as the phone is to send it back

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
