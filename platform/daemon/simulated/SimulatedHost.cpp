#include "platform/daemon/simulated/SimulatedHost.h"

#include "daemon/Startup.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"

#include <unistd.h>

#include <cstdlib>
#include <thread>
#include <utility>

namespace velmo {

SimulatedHost::SimulatedHost(const MacFolder& folder, Descriptor right)
    : folder_(folder),
      right_(std::move(right)),
      machine_(folder, [this] { endIfReplaced(); }),
      service_(clients_, folder),
      termination_(main_),
      timer_(main_) {
}

RecordStore& SimulatedHost::recordStore(std::string_view directory, std::string_view name) {
    return records_.emplace(folder_, directory, name, [this] { endIfReplaced(); });
}

bool SimulatedHost::startedByRoot() {
    const auto mac = folder_.load();
    return mac && mac->userId == 0;
}

std::optional<std::string> SimulatedHost::currentSigningTeam() {
    return folder_.load().and_then([](const SimulatedMac& mac) { return mac.team; });
}

void SimulatedHost::writeLog(std::string_view line) {
    writeStandardError(line);
}

void SimulatedHost::listen(std::string_view service, std::shared_ptr<Guard> guard) {
    // From the first client on, a signal waits for its handler instead of ending the process.
    for (const int signal : endingSignals())
        termination_.add(signal);
    if (const auto error = service_.listen(service, std::move(guard))) {
        writeLog(logLine("can't listen on " + folder_.socket(service).string() + ": "
                         + error.message()));
        exitProcess(EXIT_FAILURE);
        return;
    }
    serving_.emplace(clients_.get_executor());
    std::thread([this] { clients_.run(); }).detach();
}

void SimulatedHost::repeat(double seconds, std::function<void()> handler) {
    tick_ = std::move(handler);
    period_ = Clocks::duration(seconds);
    timer_.expires_after(period_);
    waitForTick();
}

void SimulatedHost::waitForTick() {
    timer_.async_wait([this](const std::error_code& /*never aborted*/) {
        endIfReplaced();
        tick_();
        timer_.expires_at(timer_.expiry() + period_);
        waitForTick();
    });
}

void SimulatedHost::onTermination(std::function<void()> handler) {
    termination_.async_wait([handler = std::move(handler)](const std::error_code& /*never aborted*/,
                                                           int /*signal*/) { handler(); });
}

/// Ends without a restore: the sleep setting in the folder is that of another Mac.
void SimulatedHost::endIfReplaced() {
    if (folder_.isServedBy(right_))
        return;
    writeLog(logLine("this Mac was removed or replaced; ending"));
    exitProcess(EXIT_FAILURE);
}

void SimulatedHost::exitProcess(int status) {
    ::_exit(status);
}

void SimulatedHost::park() {
    main_.run();
}

} // namespace velmo
