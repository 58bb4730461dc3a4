#pragma once

#include "daemon/Guard.h"
#include "daemon/RecordStore.h"
#include "daemon/SerialQueue.h"

#include "machine/PowerMachine.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// What the start-up asks of the system that the daemon runs on. What a reference names lives as
/// long as the process.
class DaemonHost {
public:
    virtual ~DaemonHost() = default;

    /// Only says where the record is; nothing on disk is touched.
    virtual RecordStore& recordStore(std::string_view directory, std::string_view name) = 0;

    /// The REAL user id is 0: a set-uid copy that a user starts is not root's daemon.
    virtual bool startedByRoot() = 0;

    /// The team identifier that the running daemon is signed with.
    virtual std::optional<std::string> currentSigningTeam() = 0;

    virtual PowerMachine& machine() = 0;
    virtual SerialQueue& guardQueue() = 0;

    /// One whole line on standard error (see `logLine`), in one write.
    virtual void writeLog(std::string_view line) = 0;

    /// Publishes the service; from now on clients may connect.
    virtual void listen(std::string_view service, std::shared_ptr<Guard> guard) = 0;

    /// Calls the handler on the main thread every so many seconds of monotonic time, the first time
    /// after one period.
    virtual void repeat(double seconds, std::function<void()> handler) = 0;

    /// From now on SIGTERM has no effect but this call, on the main thread.
    virtual void onTermination(std::function<void()> handler) = 0;

    /// Ends the process at once, without running static destructors while other threads still run.
    virtual void exitProcess(int status) = 0;

    /// Runs the main loop; the process ends only through `exitProcess`.
    virtual void park() = 0;
};

} // namespace velmo
