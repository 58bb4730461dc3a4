#pragma once

#include "daemon/DaemonHost.h"
#include "platform/daemon/RecordFile.h"
#include "platform/daemon/macos/DispatchQueue.h"
#include "platform/daemon/macos/XpcService.h"
#include "platform/machine/macos/MacPowerMachine.h"

#include <dispatch/dispatch.h>

#include <optional>
#include <vector>

namespace velmo {

/// Runs the daemon on the Mac itself. Allocated once and never destroyed.
class MacHost final : public DaemonHost {
public:
    MacHost();

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
    MacPowerMachine machine_;
    std::optional<RecordFile> records_;
    DispatchQueue queue_;
    std::optional<XpcService> service_;
    dispatch_source_t timer_;
    std::vector<dispatch_source_t> termination_;
};

} // namespace velmo
