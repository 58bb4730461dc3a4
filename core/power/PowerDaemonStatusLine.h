#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// How the power daemon is installed, as the host reports it.
struct PowerDaemonStatusLine {
    std::string status;                ///< enabled, requiresApproval, notRegistered or notFound
    std::optional<std::string> reason; ///< plist-missing or unknown, for notFound only

    static constexpr auto fields = std::tuple{field("status", &PowerDaemonStatusLine::status),
                                              field("reason", &PowerDaemonStatusLine::reason)};
    bool operator==(const PowerDaemonStatusLine&) const = default;
};

/// `service` is the name of the registration state that the system's service management reports;
/// `plistInBundle` whether the application bundle holds the daemon's property list. A service that
/// is not found although its list is there has only never been registered.
PowerDaemonStatusLine powerDaemonStatusLine(std::string_view service, bool plistInBundle);

} // namespace velmo
