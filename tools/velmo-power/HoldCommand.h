#pragma once

#include "client/HoldKeeper.h"
#include "platform/client/PowerAccess.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ProcessBirth.h"
#include "platform/posix/SignalPipe.h"
#include "tools/velmo-power/HoldLimits.h"
#include "tools/velmo-power/HoldRun.h"
#include "tools/velmo-power/PowerCommandLine.h"
#include "tools/velmo-power/StatusDisplay.h"
#include "tools/velmo-power/StatusText.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <sys/types.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// `velmo-power hold`: carries out what `HoldRun` decides, with a daemon, a command, a terminal and
/// signals. Nothing in it waits for the daemon, the terminal or pmset.
class HoldCommand {
public:
    HoldCommand(asio::io_context& context, PowerAccess access, HoldRequest request,
                const ProcessBirth& birth);

    /// Returns the exit status of the process, or does not return: where a signal ended the
    /// command, this process ends by the same.
    int run();

private:
    std::optional<std::string> whyUsageIsWrong();

    /// Reports an event to the run and carries its actions out. An event that an action brings
    /// about comes after the actions that are left.
    void report(std::function<HoldRun::Actions()> event);
    void carryOut(const HoldRun::Action& action);

    void waitForSignals();
    void handleSignal(SignalPipe::News news);
    void startCommand();
    void lookAtCommand();
    void tellFront();
    void stopSelf(int signal);
    void end(int exitStatus, int signal = 0);

    void tick();
    HoldRun::Facts readFacts(const PowerStatus& status);
    void draw(const PowerStatus& status, const LimitWatch::Facts& facts);

    [[nodiscard]] SteadyTime now() const { return access_.machine->steadyTime(); }

    void say(const std::string& text);
    void complain(const std::string& text);
    void after(double seconds, std::function<void()> callback);

    asio::io_context& context_;
    PowerAccess access_;
    HoldRequest request_;
    const ProcessBirth& birth_;
    HoldRun run_;
    std::deque<std::function<HoldRun::Actions()>> events_; ///< the first one is being reported
    StatusDisplay display_;
    StatusDisplay complaints_;
    SignalPipe signals_;
    asio::posix::stream_descriptor signalEnd_;
    Descriptor processEnd_;
    HoldKeeper keeper_;
    Descriptor ready_;
    std::shared_ptr<void> idleSleepPrevented_;
    std::optional<pid_t> child_;
    bool processHasEnded_ = false;
    int exitStatus_ = 0;
    int endSignal_ = 0; ///< the signal by which this process is to end, or 0
};

} // namespace velmo
