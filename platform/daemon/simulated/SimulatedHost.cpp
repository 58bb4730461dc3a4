#include "platform/daemon/simulated/SimulatedHost.h"

#include "daemon/Startup.h"
#include "platform/posix/StandardStreams.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <thread>

namespace velmo {

SimulatedHost::SimulatedHost(const MacFolder& folder)
    : folder_(folder),
      machine_(folder),
      service_(clients_, folder),
      termination_(main_),
      timer_(main_) {
}

RecordStore& SimulatedHost::recordStore(std::string_view directory, std::string_view name) {
    return records_.emplace(folder_, directory, name);
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
    if (service_.listen(service, std::move(guard))) {
        serving_.emplace(clients_.get_executor());
        std::thread([this] { clients_.run(); }).detach();
        return;
    }
    writeLog(logLine("can't listen on " + folder_.socket(service).string()));
    exitProcess(EXIT_FAILURE);
}

void SimulatedHost::repeat(double seconds, std::function<void()> handler) {
    tick_ = std::move(handler);
    period_ = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
    timer_.expires_after(period_);
    waitForTick();
}

void SimulatedHost::waitForTick() {
    timer_.async_wait([this](const std::error_code& /*never aborted*/) {
        tick_();
        timer_.expires_at(timer_.expiry() + period_);
        waitForTick();
    });
}

void SimulatedHost::onTermination(std::function<void()> handler) {
    termination_.add(SIGTERM);
    termination_.async_wait([handler = std::move(handler)](const std::error_code& /*never aborted*/,
                                                           int /*signal*/) { handler(); });
}

void SimulatedHost::exitProcess(int status) {
    ::_exit(status);
}

void SimulatedHost::park() {
    main_.run();
}

} // namespace velmo
