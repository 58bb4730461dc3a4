#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Reports to the phone whether the power daemon is installed.
struct PowerDaemonStatusLine {
    std::string status; ///< "enabled", "requiresApproval", "notRegistered", "notFound"
    std::optional<std::string> reason; ///< "plist-missing" or "unknown"; only with "notFound"

    static constexpr auto fields = std::tuple{field("status", &PowerDaemonStatusLine::status),
                                              field("reason", &PowerDaemonStatusLine::reason)};
    bool operator==(const PowerDaemonStatusLine&) const = default;
};

/// Returns the line for the registration state that the system's service management reports
/// (`service`, by the name of its case in SMAppService.Status) and for whether the application
/// bundle contains the daemon's property list. A service that is not found although the bundle has
/// its list was never registered.
PowerDaemonStatusLine powerDaemonStatusLine(std::string_view service, bool plistInBundle);

} // namespace velmo
