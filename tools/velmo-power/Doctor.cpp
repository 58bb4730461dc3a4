#include "tools/velmo-power/Doctor.h"

#include "core/power/PowerService.h"
#include "machine/PowerReadings.h"
#include "tools/velmo-power/StatusText.h"

#include <array>
#include <utility>

namespace velmo {

namespace {

using Kind = Finding::Kind;

/// What mends each fault, on the Mac that was examined.
struct Cures {
    std::string install = "install it with packaging/macos/install";
    std::string unreachable = "look at its log";
    std::string noAnswer = unreachable;
    std::string full = "end some of the programs that keep a connection to it";
    std::string noProperty = "pmset -g is asked in its place, which is slower";
    std::string noPmset = "try `pmset -g` by hand";
    std::string recordFolder = "give it to root with mode 0700";
    std::string badRecord =
        "sudo pmset -a disablesleep 0, then sudo rm /var/db/velmo/power-daemon.json";
    std::string deadDaemon = "mend what keeps the daemon from answering: its start puts sleep back";
    std::string pending = "it tries every 5 seconds; its log says why it fails";
    std::string disabledByOthers = "if nobody wants it so: sudo pmset -a disablesleep 0";
};

/// A simulated Mac has no launchd, which would start the daemon, and no root.
Cures curesOfSimulatedMac(const Installation& installation) {
    const std::string& folder = installation.simulatedMac;
    const std::string start = "start VelmoPowerDaemonSimulated " + folder;
    const auto set = [&](std::string_view change) {
        return "velmo-mac set " + folder + " " + std::string(change);
    };
    return {.install = start,
            .unreachable = start + ", which ends by itself after a minute without a hold",
            .noAnswer = "look at what it says where it was started",
            .noProperty = set("--property-unreadable off"),
            .noPmset = set("--pmset none"),
            .recordFolder = "give it to yourself with mode 0700",
            .badRecord = set("--sleep-disabled off") + ", then rm " + folder
                         + std::string(powerRecordDirectory) + "/" + std::string(powerRecordName),
            .deadDaemon = start + ", which puts sleep back",
            .pending = "it tries every 5 seconds; " + set("--pmset none"),
            .disabledByOthers = "if nobody wants it so: " + set("--sleep-disabled off")};
}

std::string cureOf(Conversation::Failure failure, const Cures& cures) {
    switch (failure) {
    case Conversation::Failure::unreachable:
        return cures.unreachable;
    case Conversation::Failure::full:
        return cures.full;
    case Conversation::Failure::gone:
    case Conversation::Failure::silent:
        return cures.noAnswer;
    }
    std::unreachable();
}

Cures curesOf(const Installation& installation) {
    return installation.simulatedMac.empty() ? Cures() : curesOfSimulatedMac(installation);
}

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

void addInstallation(std::vector<Finding>& findings, const Installation& installation,
                     const Cures& cures) {
    if (installation.daemon)
        findings.push_back(placeFinding("the daemon", *installation.daemon, cures.install));
    if (installation.propertyList)
        findings.push_back(
            placeFinding("its property list", *installation.propertyList, cures.install));
    if (installation.isEnabled)
        findings.push_back(
            finding(installation.isEnabled, "launchd may start the daemon",
                    "launchd is told not to start the daemon",
                    "allow it in System Settings, Login Items, or run `sudo launchctl enable "
                    "system/io.velmo.host.power`"));
    if (installation.simulatedMac.empty())
        findings.push_back(finding(installation.isLoaded, "the daemon can be called",
                                   "nobody offers the daemon's service", cures.install));
    if (const auto& fault = installation.signatureFault)
        findings.push_back(finding(fault->empty(), "the daemon's signature is what clients ask for",
                                   *fault,
                                   "sign both with packaging/macos/sign, and install them"));
}

void addMachine(std::vector<Finding>& findings, PowerMachine& machine, const Cures& cures) {
    findings.push_back(finding(machine.sleepDisabledProperty().has_value(),
                               "the sleep setting can be read",
                               "the sleep setting can't be read as a property", cures.noProperty));
    findings.push_back(finding(machine.runPmset({"-g"}).has_value(), "pmset runs",
                               "pmset fails or hangs", cures.noPmset));
}

void addRecord(std::vector<Finding>& findings, const Installation& installation,
               const Cures& cures) {
    const auto& folder = installation.recordFolder;
    if (folder && folder->exists) // the daemon makes it for its first hold
        findings.push_back(placeFinding("the folder of the record", *folder, cures.recordFolder));
}

/// Tells on which client's behalf sleep is disabled, if it is.
Finding sleepFinding(PowerMachine& machine, const Installation& installation,
                     const Conversation::Answer<HoldReport>& report, const Cures& cures) {
    const auto disabled = sleepDisabledNow(machine);
    if (!disabled || !*disabled)
        return {.kind = disabled ? Kind::good : Kind::unknown,
                .fact = disabled ? "sleep is enabled" : "can't see whether sleep is enabled"};
    if (report && report->holder)
        return {.fact = "sleep is disabled, for " + holderText(*report->holder)};
    if (report && report->pending)
        return {.kind = Kind::bad,
                .fact = "sleep is disabled, and the daemon could not enable it yet",
                .cure = cures.pending};
    if (!report && installation.hasRecord == true)
        return {.kind = Kind::bad,
                .fact = "sleep is disabled by the daemon, whose record is still on disk",
                .cure = cures.deadDaemon};
    if (!report && !installation.hasRecord)
        return {.kind = Kind::bad,
                .fact = "sleep is disabled, by the daemon or by another program",
                .cure = cures.deadDaemon};
    return {.kind = Kind::bad,
            .fact = "sleep is disabled, and not by the daemon",
            .cure = cures.disabledByOthers};
}

} // namespace

std::vector<Finding> diagnose(const Installation& installation, PowerMachine& machine,
                              const Conversation::Answer<HoldReport>& report) {
    const Cures cures = curesOf(installation);
    std::vector<Finding> findings;
    addInstallation(findings, installation, cures);
    if (report)
        findings.push_back({.fact = "the daemon answers"});
    else
        findings.push_back({.kind = Kind::bad,
                            .fact = std::string(failureText(report.error())),
                            .cure = cureOf(report.error(), cures)});
    addMachine(findings, machine, cures);
    addRecord(findings, installation, cures);
    if (report)
        findings.push_back(finding(
            !report->recordIsUnreadable, "there is no record that can't be read",
            "the daemon's record can't be read; sleep may still be disabled", cures.badRecord));
    findings.push_back(sleepFinding(machine, installation, report, cures));
    return findings;
}

std::string findingsText(const std::vector<Finding>& findings, const Installation& installation) {
    std::string text;
    if (!installation.simulatedMac.empty())
        text.append("mac      ").append(simulatedText(installation.simulatedMac)).append("\n");
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
