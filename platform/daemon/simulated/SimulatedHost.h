#pragma once

#include "daemon/DaemonHost.h"
#include "platform/daemon/simulated/SimulatedRecordStore.h"
#include "platform/daemon/simulated/SocketService.h"
#include "platform/daemon/simulated/ThreadQueue.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/simulated/MacFolder.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <optional>

namespace velmo {

/// Runs the daemon on a Mac that lives in a folder. Made once and never destroyed. As on a Mac,
/// clients are served beside the main thread, which may wait for the guard's queue.
class SimulatedHost final : public DaemonHost {
public:
    /// `right` is the right to serve the Mac (`MacFolder::serve`). Once the folder is gone or
    /// contains another Mac, the process ends before it does anything there.
    SimulatedHost(const MacFolder& folder, Descriptor right);

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
    void endIfReplaced();

    asio::io_context main_{1};
    asio::io_context clients_{1}; ///< run by a thread of its own
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> serving_;
    MacFolder folder_;
    Descriptor right_;
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
