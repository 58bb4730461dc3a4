#pragma once

#include "platform/client/PowerAccess.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ProcessBirth.h"
#include "platform/posix/SignalPipe.h"
#include "tools/velmo-power/HoldLimits.h"
#include "tools/velmo-power/PowerCommandLine.h"
#include "tools/velmo-power/StatusDisplay.h"
#include "tools/velmo-power/StatusText.h"

#include "client/HoldKeeper.h"
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// `velmo-power hold`: holds until it is told to stop, until a limit is reached or until its
/// command has ended, then releases. Nothing in it waits for the daemon, the terminal or pmset.
class HoldCommand {
public:
    HoldCommand(asio::io_context& context, PowerAccess access, HoldRequest request,
                const ProcessBirth& birth);

    /// Returns the exit status of the process. Does not return if a signal ended the command: this
    /// process then ends by the same signal.
    int run();

private:
    std::optional<std::string> whyUsageIsWrong();
    void waitForSignals();
    void handleSignal(SignalPipe::News news);
    void passOn(SignalPipe::News news);
    void suspend();
    void goOn();

    void statusChanged(const HoldKeeper::Status& status);
    void awake(const HoldKeeper::Status& status);
    void notAwake(const HoldKeeper::Status& status);
    void noHoldAtAll(const std::string& why, int exitStatus);
    void startCommand();
    void tellReady();
    void reapCommand();

    void tick();
    void watchLimits(const PowerStatus& status);
    void watchSetting(const PowerStatus& status);
    void watchLid();
    void watchProcess();
    void draw(const PowerStatus& status);
    [[nodiscard]] LimitWatch::Facts facts(const PowerStatus& status) const;

    void giveUpHold(const std::string& why);
    void dropHold();
    void finish(int exitStatus);
    void finishBySignal(int signal);
    void keeperStopped(HoldKeeper::Outcome outcome);
    [[nodiscard]] bool isKnownToBeRestored(HoldKeeper::Outcome outcome) const;

    void say(const std::string& text);
    void complain(const std::string& text);
    [[nodiscard]] int failure(int exitStatus) const;
    void after(double seconds, std::function<void()> callback);

    asio::io_context& context_;
    PowerAccess access_;
    HoldRequest request_;
    const ProcessBirth& birth_;
    StatusDisplay display_;
    StatusDisplay complaints_;
    SignalPipe signals_;
    asio::posix::stream_descriptor signalEnd_;
    Descriptor processEnd_;
    HoldKeeper keeper_;
    LimitWatch limits_;
    Descriptor ready_;
    std::shared_ptr<void> idleSleepPrevented_;
    std::optional<pid_t> child_;
    std::optional<SteadyTime> awakeSince_; ///< start of the first hold, even if it was lost since
    std::optional<SteadyTime> lidShutSince_;
    bool displayIsOff_ = false;
    bool processHasEnded_ = false;
    bool enabledIsTold_ = false; ///< people know that sleep is enabled although we hold
    bool enabledIsAsked_ = false;
    bool wantsHold_ = true;   ///< false once the hold is given up while a command runs on
    bool isDropping_ = false; ///< set while the hold is being given up
    std::optional<SteadyTime> endsSince_;
    std::optional<int> exitStatus_; ///< set once the end has begun
    int endSignal_ = 0;             ///< the signal by which this process is to end, or 0
};

} // namespace velmo
