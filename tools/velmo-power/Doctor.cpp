#include "tools/velmo-power/Doctor.h"

#include "machine/PowerReadings.h"
#include "tools/velmo-power/StatusText.h"

#include <array>
#include <utility>

namespace velmo {

namespace {

using Kind = Finding::Kind;

constexpr std::string_view installAgain = "install it with packaging/macos/install";

Finding placeFinding(std::string_view name, const Installation::Place& place,
                     std::string_view cure) {
    const std::string what = std::string(name) + " " + place.path;
    if (!place.exists)
        return {.kind = Kind::bad, .fact = what + " is missing", .cure = std::string(cure)};
    if (place.isLink)
        return {.kind = Kind::bad,
                .fact = what + " is a link",
                .cure = "remove it; " + std::string(cure)};
    if (!place.isSafe)
        return {.kind = Kind::bad,
                .fact = what + " belongs to somebody else, or others may write to it",
                .cure = std::string(cure)};
    return {.fact = what + " is in order"};
}

/// Returns a good or a bad finding, or one of kind `unknown` if `isGood` is absent.
Finding finding(std::optional<bool> isGood, std::string good, std::string bad, std::string cure) {
    if (!isGood)
        return {.kind = Kind::unknown, .fact = "can't see whether " + good};
    if (*isGood)
        return {.fact = std::move(good)};
    return {.kind = Kind::bad, .fact = std::move(bad), .cure = std::move(cure)};
}

void addInstallation(std::vector<Finding>& findings, const Installation& installation) {
    if (installation.daemon)
        findings.push_back(placeFinding("the daemon", *installation.daemon, installAgain));
    if (installation.propertyList)
        findings.push_back(
            placeFinding("its property list", *installation.propertyList, installAgain));
    if (installation.isEnabled)
        findings.push_back(
            finding(installation.isEnabled, "launchd may start the daemon",
                    "launchd is told not to start the daemon",
                    "allow it in System Settings, Login Items, or run `sudo launchctl enable "
                    "system/io.velmo.host.power`"));
    findings.push_back(finding(
        installation.isLoaded, "the daemon can be called", "nobody offers the daemon's service",
        installation.daemon ? std::string(installAgain) : "start VelmoPowerDaemonSimulated"));
    if (const auto& fault = installation.signatureFault)
        findings.push_back(finding(fault->empty(), "the daemon's signature is what clients ask for",
                                   *fault,
                                   "sign both with packaging/macos/sign, and install them"));
}

void addMachine(std::vector<Finding>& findings, PowerMachine& machine) {
    findings.push_back(finding(machine.sleepDisabledProperty().has_value(),
                               "the sleep setting can be read",
                               "the sleep setting can't be read as a property",
                               "pmset -g is asked in its place, which is slower"));
    findings.push_back(finding(machine.runPmset({"-g"}).has_value(), "pmset runs",
                               "pmset fails or hangs", "try `pmset -g` by hand"));
}

void addRecord(std::vector<Finding>& findings, const Installation& installation) {
    const auto& folder = installation.recordFolder;
    if (folder && folder->exists) // the daemon makes it for its first hold
        findings.push_back(
            placeFinding("the folder of the record", *folder, "give it to root with mode 0700"));
}

/// Tells for which client sleep is disabled, if it is.
Finding sleepFinding(PowerMachine& machine, const std::optional<HoldReport>& report) {
    const auto disabled = sleepDisabledNow(machine);
    if (!disabled || !*disabled)
        return {.kind = disabled ? Kind::good : Kind::unknown,
                .fact = disabled ? "sleep is enabled" : "can't see whether sleep is enabled"};
    if (report && report->holder)
        return {.fact = "sleep is disabled, for " + holderText(*report->holder)};
    if (report && report->pending)
        return {.kind = Kind::bad,
                .fact = "sleep is disabled, and the daemon could not enable it yet",
                .cure = "it tries every 5 seconds; its log says why it fails"};
    return {.kind = Kind::bad,
            .fact = "sleep is disabled, and not by the daemon",
            .cure = "if nobody wants it so: sudo pmset -a disablesleep 0"};
}

} // namespace

std::vector<Finding> diagnose(const Installation& installation, PowerMachine& machine,
                              const std::optional<HoldReport>& report,
                              std::string_view whyNoReport) {
    std::vector<Finding> findings;
    addInstallation(findings, installation);
    findings.push_back(finding(report.has_value(), "the daemon answers", std::string(whyNoReport),
                               "look at its log"));
    addMachine(findings, machine);
    addRecord(findings, installation);
    if (report)
        findings.push_back(
            finding(!report->recordIsUnreadable, "there is no record that can't be read",
                    "the daemon's record can't be read; sleep may still be disabled",
                    "sudo pmset -a disablesleep 0, then sudo rm /var/db/velmo/power-daemon.json"));
    findings.push_back(sleepFinding(machine, report));
    return findings;
}

std::string findingsText(const std::vector<Finding>& findings, const Installation& installation) {
    std::string text;
    for (const Finding& each : findings) {
        constexpr auto marks =
            std::to_array<std::string_view>({"ok       ", "WRONG    ", "unknown  "});
        text.append(marks.at(static_cast<std::size_t>(each.kind))).append(each.fact).append("\n");
        if (!each.cure.empty())
            text.append("         -> ").append(each.cure).append("\n");
    }
    if (!installation.logEnd.empty())
        text.append("The end of ").append(installation.logPath).append(":\n");
    for (const std::string& line : installation.logEnd)
        text.append("  ").append(line).append("\n");
    return text;
}

} // namespace velmo
