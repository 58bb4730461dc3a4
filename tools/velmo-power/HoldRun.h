#pragma once

#include "client/HoldKeeper.h"
#include "core/support/Time.h"
#include "tools/velmo-power/HoldLimits.h"
#include "tools/velmo-power/PowerCommandLine.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Decides, during one `velmo-power hold`, what is asked of the daemon, what reaches the command,
/// what is told, and when and how the process ends. A run calls nothing and waits for nothing: the
/// caller reports each event and carries out the actions that it returns, in their order, before
/// the next event.
class HoldRun {
public:
    struct Action {
        enum class Kind {
            say,              ///< `text`, unless the user wants to hear only of what went wrong
            complain,         ///< `text`, always
            askForHold,       ///< its status changes are reported by `statusChanged`
            checkHold,        ///< asks the daemon whether the hold is in force
            giveUpHold,       ///< `gaveUp` reports what came of it
            preventIdleSleep, ///< until `allowIdleSleep`
            allowIdleSleep,
            turnDisplayOff,
            tellFront,     ///< tells the process in front that the wait is over; see `frontTold`
            startCommand,  ///< `commandStarted` or `commandNotStarted` reports the outcome
            signalCommand, ///< by the signal `number`
            stopSelf,      ///< by the signal `number`; `continued` reports the continuation
            awaitAnswer,   ///< `answerIsLate` is due after `Conversation::untilWaitIsTold`
            awaitRelease,  ///< `releaseIsLate` is due after the same time
            end,           ///< ends the process, with the exit status `number`
            endBySignal,   ///< ends the process by the signal `number`
            endAtOnce,     ///< ends the process, with the exit status `number`, as it is
        };

        Kind kind{};
        std::string text{};
        int number = 0;

        bool operator==(const Action&) const = default;
    };

    using Kind = Action::Kind;
    using Actions = std::vector<Action>;

    struct Signal {
        int number = 0;
        bool fromTerminal = false; ///< the terminal sends it to the command as well
    };

    /// How a command has ended: by its exit status, or by a signal.
    struct End {
        int status = 0;
        int signal = 0; ///< 0: none

        auto operator<=>(const End&) const = default;
    };

    /// What is looked at every second.
    struct Facts {
        LimitWatch::Facts limits{};
        std::optional<bool> sleepDisabled{}; ///< by the property alone
        bool lidWouldSleep = false;          ///< the lid is shut, and that makes the Mac sleep
        bool checkIsUnanswered = false;      ///< the daemon has yet to answer a call
        bool frontIsGone = false;            ///< the process in front reads no more
    };

    /// What the run remembers.
    struct State {
        enum class Command { none, running, ended };

        Command command = Command::none;
        HoldKeeper::State keeper = HoldKeeper::State::connecting;
        bool wantsHold = true;      ///< false once the hold is given up for good
        bool isGivingUp = false;    ///< a release is not answered yet
        bool frontWaits = false;    ///< the process in front waits for the hold
        bool enabledIsTold = false; ///< that sleep is enabled although the hold is in force
        bool enabledIsChecked = false;
        bool displayIsOff = false;
        std::optional<int> stopsBy; ///< the signal by which this process is to stop
        std::optional<End> end;     ///< set once the end has begun
        std::optional<SteadyTime> endsSince;
        std::optional<SteadyTime> firstAwake; ///< absent: there was no hold yet
        std::optional<SteadyTime> awakeSince; ///< absent: there is no hold at the moment
        double awakeBefore = 0;               ///< seconds, until the hold was last lost
        std::optional<SteadyTime> lidShutSince;

        bool operator==(const State&) const = default;
    };

    /// A second signal within this time is the same one once more, as `timeout` sends it to the
    /// whole group; a later one means not to wait any longer.
    static constexpr double impatience = 1.0; ///< seconds

    static constexpr double displayOffDelay = 1.0; ///< seconds that the lid is shut

    HoldRun(HoldRequest request, SteadyTime begin);

    // Events.

    Actions started(const LimitWatch::Facts& facts);
    Actions statusChanged(const HoldKeeper::Status& status, SteadyTime now);
    Actions signalled(Signal signal, SteadyTime now);
    Actions ticked(const Facts& facts);
    Actions answerIsLate();
    Actions releaseIsLate();

    /// The process in front was told that the wait is over, or is gone.
    Actions frontTold(bool isThere, SteadyTime now);

    Actions commandStarted();
    /// `why` is absent where there is no such program.
    Actions commandNotStarted(const std::optional<std::string>& why, SteadyTime now);
    Actions commandStopped(int signal, SteadyTime now);
    Actions commandEnded(End end, SteadyTime now);

    /// The release was answered, or was given up. `sleepDisabled` is the property, absent where it
    /// can't be read.
    Actions gaveUp(HoldKeeper::Outcome outcome, std::optional<bool> sleepDisabled);

    /// This process was stopped and goes on.
    Actions continued();

    // What a caller shows meanwhile.

    [[nodiscard]] const State& state() const { return state_; }

    /// Returns for how many seconds the Mac was held awake in all.
    [[nodiscard]] double awakeFor(SteadyTime now) const;

    /// Returns what ends the hold, as `LimitWatch::waitsFor` has it.
    [[nodiscard]] std::string waitsFor(const LimitWatch::Facts& facts) const {
        return limits_.waitsFor(facts);
    }

private:
    void act(Action::Kind kind, std::string text = {});
    void act(Action::Kind kind, int number);
    Actions taken();

    void held(const HoldKeeper::Status& status, SteadyTime now);
    void notHeld(const HoldKeeper::Status& status, SteadyTime now);
    void noHoldAtAll(const std::string& why, int exitStatus, SteadyTime now);
    void proceed();
    void startCommand();
    void passOn(Signal signal);
    void stopBy(int signal, SteadyTime now);
    void watchSetting(const Facts& facts);
    void watchLid(const Facts& facts);
    void limitReached(const std::string& why, SteadyTime now);
    void dropHold(SteadyTime now);
    void giveUp(SteadyTime now);
    void finish(End end, SteadyTime now);
    void endNow();
    void tellOutcome(HoldKeeper::Outcome outcome, std::optional<bool> sleepDisabled);
    [[nodiscard]] std::string missedText() const;
    void stopAwake(SteadyTime now);
    [[nodiscard]] int failure(int exitStatus) const;

    [[nodiscard]] bool isAskingForHold() const { return state_.wantsHold && !state_.isGivingUp; }

    [[nodiscard]] bool runsCommand() const { return state_.command == State::Command::running; }

    [[nodiscard]] bool hasCommand() const { return !request_.command.empty(); }

    HoldRequest request_;
    LimitWatch limits_;
    State state_;
    Actions actions_;
};

} // namespace velmo
