#include "core/power/PowerDaemonStatusLine.h"

namespace velmo {

PowerDaemonStatusLine powerDaemonStatusLine(std::string_view service, bool plistInBundle) {
    if (service == "enabled" || service == "requiresApproval" || service == "notRegistered")
        return {.status = std::string(service)};
    if (service != "notFound")
        return {.status = "notFound", .reason = "unknown"};
    if (plistInBundle)
        return {.status = "notRegistered"};
    return {.status = "notFound", .reason = "plist-missing"};
}

} // namespace velmo
