#include "platform/daemon/macos/MacHost.h"

#include "core/power/PowerService.h"
#include "daemon/Startup.h"
#include "platform/daemon/macos/MainQueueSources.h"
#include "platform/macos/NSStringText.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "platform/xpc/SigningTeam.h"

#include <unistd.h>

#include <utility>

namespace velmo {

namespace {

constexpr uid_t root = 0;

} // namespace

MacHost::MacHost() : queue_(powerDaemonMachService.data()) {
}

RecordStore& MacHost::recordStore(std::string_view directory, std::string_view name) {
    return records_.emplace(directory, name, root);
}

bool MacHost::startedByRoot() {
    return ::getuid() == root;
}

std::optional<std::string> MacHost::currentSigningTeam() {
    return velmo::currentSigningTeam();
}

void MacHost::writeLog(std::string_view line) {
    writeStandardError(line);
}

void MacHost::listen(std::string_view service, std::shared_ptr<Guard> guard) {
    service_.emplace([[NSXPCListener alloc] initWithMachServiceName:stringFrom(service)],
                     std::move(guard),
                     [this](std::string_view message) { writeLog(logLine(message)); });
}

void MacHost::repeat(double seconds, std::function<void()> handler) {
    timer_ = repeatOnMainQueue(seconds, std::move(handler));
}

void MacHost::onTermination(std::function<void()> handler) {
    for (const int signal : endingSignals())
        termination_.push_back(signalOnMainQueue(signal, handler));
}

void MacHost::exitProcess(int status) {
    ::_exit(status);
}

void MacHost::park() {
    dispatch_main();
}

} // namespace velmo
