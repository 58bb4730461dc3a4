#pragma once

#include "sessions/Program.h"
#include "sessions/SessionHost.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <sys/resource.h>

#include <functional>
#include <map>
#include <memory>

namespace velmo {

/// Runs the host's programs on pseudo-terminals, and tells the host what happens to them.
class PtyPrograms final : public Programs {
public:
    /// What the host is told: a program is ready to be read or written, or has ended.
    struct Events {
        std::function<void(SessionNumber)> ready;
        std::function<void(SessionNumber, std::int32_t waitStatus)> ended;
    };

    /// `openFiles` is the limit on open files that programs get: the one that this process was
    /// started with, before it raised its own.
    PtyPrograms(asio::io_context& context, Events events, const rlimit& openFiles);

    [[nodiscard]] std::shared_ptr<Program> start(SessionNumber session, const SpawnRequest& request,
                                                 const Pty::Environment& environment) override;

private:
    void waitForEnds();
    void reap();

    asio::io_context& context_;
    Events events_;
    rlimit openFiles_;
    asio::signal_set ends_;
    std::map<pid_t, SessionNumber> running_;
};

} // namespace velmo
