#include "daemon/Startup.h"

#include "core/power/PowerService.h"
#include "core/support/Ascii.h"

#include <memory>

namespace velmo {

std::string logLine(std::string_view message) {
    std::string line("VelmoPowerDaemon: ");
    for (const char c : message) // what a system call tells may have lines of its own
        line += Ascii::isControl(c) ? ' ' : c;
    line += '\n';
    return line;
}

void runDaemon(DaemonHost& host) {
    const auto log = [&host](std::string_view message) { host.writeLog(logLine(message)); };
    RecordStore& records = host.recordStore(powerRecordDirectory, powerRecordName);
    if (!host.startedByRoot()) {
        log("must run as root (launchd)");
        host.exitProcess(1);
        return;
    }
    const auto requirement = powerClientRequirement(host.currentSigningTeam());
    SerialQueue& queue = host.guardQueue();
    const auto exitProcess = [&host](int status) { host.exitProcess(status); };
    const auto guardian = std::make_shared<Guard>(Guard::Services{.machine = host.machine(),
                                                                  .records = records,
                                                                  .queue = queue,
                                                                  .log = log,
                                                                  .exitProcess = exitProcess},
                                                  requirement);
    queue.sync([&] { guardian->recover(); });
    host.listen(powerDaemonMachService, guardian);
    host.repeat(tickInterval, [guardian] { guardian->tick(); });
    host.onTermination([guardian] { guardian->stop(); });
    host.park();
}

} // namespace velmo
