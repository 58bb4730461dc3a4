#pragma once

#include "core/windows/AppTarget.h"
#include "core/windows/WindowRecord.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmo {

/// Names a window to the host. The first three members name its application, as those of
/// `AppTarget` do. `WindowRaise::perform` raises the window.
struct WindowRequest {
    std::int32_t pid = 0;
    std::string appId;
    std::optional<std::string> started;
    std::uint32_t windowId = 0;

    static constexpr std::size_t argumentCount = 4;

    /// Reads the three arguments of an `AppTarget` and a window number (`WindowArgs::windowId`).
    /// Returns nothing for any other number of arguments, or if one of them is refused.
    static std::optional<WindowRequest> parse(std::span<const std::string> arguments);

    /// Returns the arguments by which a request names the window of the record: `parse` accepts
    /// them. Returns nothing for a window that no request can name, such as one of an application
    /// without an identifier.
    static std::optional<std::vector<std::string>> words(const WindowRecord& window);

    /// Returns the application as `ArrangePolicy::identityMatches` wants it.
    [[nodiscard]] AppTarget target() const {
        return {.pid = pid, .appId = appId, .started = started};
    }

    static constexpr auto fields = std::tuple_cat(
        targetFields<WindowRequest>(), std::tuple{field("windowId", &WindowRequest::windowId)});
    bool operator==(const WindowRequest&) const = default;
};

} // namespace velmo
