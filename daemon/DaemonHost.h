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

/// Offers what the start-up asks of the system that the daemon runs on. What a returned reference
/// names lives as long as the process.
class DaemonHost {
public:
    virtual ~DaemonHost() = default;

    /// Returns the store of the record with that path. Touches nothing on disk.
    virtual RecordStore& recordStore(std::string_view directory, std::string_view name) = 0;

    /// Tells whether the REAL user id is 0: a set-uid copy that a user starts is not root's daemon.
    virtual bool startedByRoot() = 0;

    /// Returns the team identifier that the running daemon is signed with; absent if it has none.
    virtual std::optional<std::string> currentSigningTeam() = 0;

    virtual PowerMachine& machine() = 0;
    virtual SerialQueue& guardQueue() = 0;

    /// Writes one whole line (see `logLine`) to standard error, in one write.
    virtual void writeLog(std::string_view line) = 0;

    /// Publishes the service: clients may connect from then on.
    virtual void listen(std::string_view service, std::shared_ptr<Guard> guard) = 0;

    /// Calls the handler on the main thread every so many seconds of monotonic time, the first time
    /// after one period.
    virtual void repeat(double seconds, std::function<void()> handler) = 0;

    /// Lets SIGTERM have no effect any more but a call of the handler, on the main thread, and
    /// likewise SIGINT and SIGHUP, unless the process was started to ignore them.
    virtual void onTermination(std::function<void()> handler) = 0;

    /// Ends the process at once, without running static destructors while other threads still run.
    virtual void exitProcess(int status) = 0;

    /// Runs the main loop; the process ends only through `exitProcess`.
    virtual void park() = 0;
};

} // namespace velmo
