#include "platform/client/macos/MacInstallation.h"

#include "core/power/PowerService.h"
#include "platform/client/PlaceOnDisk.h"
#include "platform/posix/ChildProcess.h"

#include <string_view>

namespace velmo {

namespace {

constexpr std::string_view daemonPath = "/Library/PrivilegedHelperTools/VelmoPowerDaemon";
constexpr std::string_view propertyLists = "/Library/LaunchDaemons/";
constexpr std::string_view logFolder = "/var/log/";
constexpr std::size_t logLines = 5;

/// A line of "launchctl print-disabled system" reads `"label" => disabled`; older systems end the
/// line in "true".
std::optional<bool> isEnabled(const std::string& launchctl) {
    const auto list = outputOf(launchctl, {"print-disabled", "system"});
    if (!list)
        return std::nullopt;
    const std::string label = "\"" + std::string(powerDaemonMachService) + "\" => ";
    const std::size_t found = list->find(label);
    if (found == std::string::npos)
        return true; // what is not listed is enabled
    const std::string_view state = std::string_view(*list).substr(found + label.size());
    return !state.starts_with("disabled") && !state.starts_with("true");
}

std::string signatureFault(const std::string& codesign, const std::string& daemon,
                           const std::optional<std::string>& requirement) {
    if (!requirement)
        return "this copy of velmo-power is not signed by a team";
    const std::string test = "=" + *requirement;
    if (!outputOf(codesign, {"--verify", "--strict", daemon}))
        return "the daemon is not signed, or was changed since";
    if (!outputOf(codesign, {"--verify", "-R", test, daemon}))
        return "the daemon is signed by another team than velmo-power";
    return "";
}

} // namespace

Installation examineMac(const std::optional<std::string>& daemonRequirement,
                        const std::string& root) {
    const std::string launchctl = root + "/bin/launchctl";
    const std::string daemon = root + std::string(daemonPath);
    const std::string label(powerDaemonMachService);
    Installation found;
    found.daemon = placeOnDisk(daemon, rootUser);
    found.propertyList = placeOnDisk(
        root + std::string(propertyLists) + std::string(powerDaemonPlistName), rootUser);
    found.isEnabled = isEnabled(launchctl);
    found.isLoaded = outputOf(launchctl, {"print", "system/" + label}).has_value();
    if (found.daemon->exists)
        found.signatureFault =
            signatureFault(root + "/usr/bin/codesign", daemon, daemonRequirement);
    found.recordFolder = placeOnDisk(root + std::string(powerRecordDirectory), rootUser);
    found.hasRecord = isOnDisk(found.recordFolder->path + "/" + std::string(powerRecordName));
    found.logPath = root + std::string(logFolder) + label + ".log";
    found.logEnd = lastLines(found.logPath, logLines);
    return found;
}

} // namespace velmo
