#pragma once

#include "daemon/DaemonHost.h"
#include "platform/daemon/simulated/SimulatedRecordStore.h"
#include "platform/daemon/simulated/SocketService.h"
#include "platform/daemon/simulated/ThreadQueue.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/simulated/MacFolder.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>

namespace velmo {

/// Runs the daemon on a Mac that lives in a folder. To be allocated once and never destroyed.
class SimulatedHost final : public DaemonHost {
public:
    explicit SimulatedHost(const MacFolder& folder);

    RecordStore& recordStore(std::string_view directory, std::string_view name) override;
    bool startedByRoot() override;
    std::optional<std::string> currentSigningTeam() override;

    PowerMachine& machine() override { return machine_; }

    SerialQueue& guardQueue() override { return queue_; }

    void writeLog(std::string_view line) override;
    void listen(std::string_view service, std::shared_ptr<Guard> guard) override;
    void repeat(double seconds, std::function<void()> handler) override;
    void onTermination(std::function<void()> handler) override;
    void exitProcess(int status) override;
    void park() override;

private:
    void waitForTick();

    asio::io_context main_{1};
    MacFolder folder_;
    SimulatedPowerMachine machine_;
    std::optional<SimulatedRecordStore> records_;
    ThreadQueue queue_;
    SocketService service_;
    asio::signal_set termination_;
    asio::steady_timer timer_;
    std::chrono::steady_clock::duration period_{};
    std::function<void()> tick_;
};

} // namespace velmo
