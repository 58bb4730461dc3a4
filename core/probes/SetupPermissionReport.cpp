#include "core/probes/SetupPermissionReport.h"

namespace velmo {

namespace {

// MacErrors.h
constexpr std::int32_t noErr = 0;
constexpr std::int32_t errAEEventNotPermitted = -1743;
constexpr std::int32_t errAEEventWouldRequireUserConsent = -1744;

} // namespace

SetupPermissionReport::Automation SetupPermissionReport::automationForStatus(std::int32_t status) {
    switch (status) {
    case noErr:
        return Automation::granted;
    case errAEEventNotPermitted:
        return Automation::denied;
    case errAEEventWouldRequireUserConsent:
        return Automation::notAsked;
    default:
        return Automation::notRunning;
    }
}

SetupPermissionReport::Arguments
SetupPermissionReport::parseArgs(std::span<const std::string> arguments) {
    const bool ask = arguments.size() == 1 && arguments.front() == "--ask-automation";
    return {.ask = ask, .ok = ask || arguments.empty()};
}

} // namespace velmo
