#pragma once

#include "platform/client/PowerAccess.h"
#include "tools/velmo-power/StatusDisplay.h"

#include "client/HoldKeeper.h"
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// `velmo-power hold`: holds until it is told to stop or until its command has ended, then
/// releases.
class HoldCommand {
public:
    HoldCommand(asio::io_context& context, PowerAccess access, std::int64_t batteryFloor,
                std::vector<std::string> command);

    /// The exit status of the process.
    int run();

private:
    using Clock = std::chrono::steady_clock;

    void statusChanged(const HoldKeeper::Status& status);
    void startCommand();
    void waitForSignal();
    void handleSignal(int signal);
    void reapCommand();
    void drawStatusEverySecond();
    void finish(int exitStatus);

    asio::io_context& context_;
    PowerAccess access_;
    std::int64_t batteryFloor_;
    std::vector<std::string> command_;
    StatusDisplay display_;
    HoldKeeper keeper_;
    asio::signal_set signals_;
    asio::steady_timer redraw_;
    std::optional<pid_t> child_;
    std::optional<Clock::time_point> heldSince_;
    bool everHeld_ = false;
    std::optional<int> exitStatus_; ///< set once the end has begun
};

} // namespace velmo
