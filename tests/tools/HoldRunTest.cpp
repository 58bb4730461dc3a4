#include "tools/velmo-power/HoldRun.h"

#include "tools/velmo-power/ExitStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace velmo {
namespace {

using Kind = HoldRun::Kind;
using Outcome = HoldKeeper::Outcome;
using Keeper = HoldKeeper::State;

constexpr SteadyTime start{100};

HoldRequest with(std::vector<std::string> command) {
    return {.command = std::move(command)};
}

const HoldRequest alone = with({});
const HoldRequest withMake = with({"make"});

/// Plays a run by hand: `said` has what was told since the last look, complaints with a "!".
class Played {
public:
    explicit Played(HoldRequest request) : run_(std::move(request), start) {
        take(run_.started({.now = start}));
    }

    void status(Keeper state, std::string_view reason = {}) {
        take(run_.statusChanged({.state = state, .reason = std::string(reason)}, now));
    }

    void held() { status(Keeper::holding); }

    void gaveUp(Outcome outcome, std::optional<bool> sleepDisabled = false) {
        take(run_.gaveUp(outcome, sleepDisabled));
    }

    void tick(HoldRun::Facts facts = {}) {
        facts.limits.now = now;
        take(run_.ticked(facts));
    }

    void signal(int number, bool fromTerminal = false) {
        take(run_.signalled({.number = number, .fromTerminal = fromTerminal}, now));
    }

    void commandEnded(HoldRun::End end) { take(run_.commandEnded(end, now)); }

    void take(const HoldRun::Actions& actions) {
        for (const auto& action : actions) {
            if (action.kind == Kind::say || action.kind == Kind::complain)
                said_.push_back((action.kind == Kind::say ? "" : "!") + action.text);
            else
                done_.push_back(action);
            if (action.kind == Kind::startCommand)
                take(run_.commandStarted());
        }
    }

    std::vector<std::string> said() { return std::exchange(said_, {}); }

    /// Returns the last action with this number, told from the others by its kind.
    [[nodiscard]] bool did(Kind kind, int number = 0) const {
        return std::ranges::find(done_, HoldRun::Action{.kind = kind, .number = number})
               != done_.end();
    }

    void forget() { done_.clear(), said_.clear(); }

    [[nodiscard]] std::vector<Kind> done() const {
        std::vector<Kind> kinds;
        for (const auto& action : done_)
            kinds.push_back(action.kind);
        return kinds;
    }

    HoldRun& run() { return run_; }

    SteadyTime now = start;

private:
    HoldRun run_;
    std::vector<std::string> said_;
    HoldRun::Actions done_;
};

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(HoldRun, PassesOnSignalsThatTheTerminalDoesNotSend) {
    for (const auto& [number, fromTerminal, isPassedOn] :
         {std::tuple(SIGINT, true, false), std::tuple(SIGINT, false, true),
          std::tuple(SIGQUIT, true, false), std::tuple(SIGTERM, false, true),
          std::tuple(SIGHUP, true, true), std::tuple(SIGHUP, false, true),
          std::tuple(SIGTSTP, true, false), std::tuple(SIGTSTP, false, true)}) {
        Played play(withMake);
        play.held();
        play.signal(number, fromTerminal);
        EXPECT_EQ(play.did(Kind::signalCommand, number), isPassedOn) << number << fromTerminal;
        EXPECT_EQ(play.run().state().end, std::nullopt);
    }
}

TEST(HoldRun, ASignalEndsARunWithoutACommand) {
    Played play(alone);
    play.held();
    play.signal(SIGINT, true);
    EXPECT_TRUE(play.did(Kind::giveUpHold));
    play.gaveUp(Outcome::restored);
    EXPECT_TRUE(play.did(Kind::end, ExitStatus::success));

    for (const HoldRequest& request : {alone, withMake}) {
        Played waiting(request);
        waiting.signal(SIGINT, true);
        waiting.gaveUp(Outcome::unknown);
        EXPECT_TRUE(waiting.did(Kind::endBySignal, SIGINT)) << "there was no hold yet";
    }
}

TEST(HoldRun, ASignalRepeatedAfterASecondEndsTheRun) {
    Played play(withMake);
    play.held();
    play.commandEnded({.status = 7});
    play.signal(SIGINT);
    play.now = {start.seconds + 0.9};
    play.signal(SIGINT);
    EXPECT_EQ(play.run().state().isGivingUp, true);
    EXPECT_FALSE(play.did(Kind::endAtOnce, 7));
    play.now = {start.seconds + 1};
    play.signal(SIGINT);
    EXPECT_TRUE(play.did(Kind::endAtOnce, 7)) << "the command's own status";

    Played bySignal(withMake);
    bySignal.held();
    bySignal.commandEnded({.signal = SIGKILL});
    bySignal.now = {start.seconds + 2};
    bySignal.signal(SIGINT);
    EXPECT_TRUE(bySignal.did(Kind::endAtOnce, ExitStatus::bySignal + SIGKILL));

    Played without(alone);
    without.held();
    without.signal(SIGINT);
    without.now = {start.seconds + 2};
    without.signal(SIGINT);
    EXPECT_TRUE(without.did(Kind::endAtOnce, ExitStatus::refused));
}

TEST(HoldRun, AStopGivesTheHoldUpAndAContinuationAsksAgain) {
    for (const int number : {SIGTSTP, SIGTTIN, SIGSTOP}) {
        Played play(withMake);
        play.held();
        play.forget();
        if (number == SIGTSTP)
            play.signal(number, true);
        play.take(play.run().commandStopped(number, play.now)); // what Ctrl-Z does to both
        EXPECT_THAT(play.done(), ElementsAre(Kind::allowIdleSleep, Kind::giveUpHold));
        EXPECT_THAT(play.said(), ElementsAre("stopped: the hold is given up meanwhile"));
        play.gaveUp(Outcome::restored);
        EXPECT_TRUE(play.did(Kind::stopSelf, number));
        play.forget();
        play.take(play.run().continued());
        EXPECT_THAT(play.done(), ElementsAre(Kind::signalCommand, Kind::askForHold));
        EXPECT_TRUE(play.did(Kind::signalCommand, SIGCONT));
        EXPECT_THAT(play.said(), ElementsAre("going on: asking for the hold again"));
    }
}

TEST(HoldRun, WarnsOfEachLoss) {
    struct Case {
        Keeper state;
        std::string_view reason;
        std::vector<std::string> said;
    };

    const Case cases[] = {
        {Keeper::connecting, "battery", {"!the battery fell below the floor; asking again"}},
        {Keeper::connecting,
         HoldKeeper::connectionLost,
         {"!the power daemon went away; asking again"}},
        {Keeper::unreachable, HoldKeeper::daemonSilent, {"!the power daemon does not answer"}},
        {Keeper::refused, "thermal", {"!refused: the machine is too hot"}},
        {Keeper::released,
         "released by another",
         {"!the hold is over: released by another client; make runs on"}},
        {Keeper::riding,
         "",
         {"the Mac is held awake already, by another client; its hold is taken over when it ends"}},
    };
    for (const auto& [state, reason, said] : cases) {
        Played play(withMake);
        play.held();
        play.forget();
        play.status(state, reason);
        EXPECT_EQ(play.said(), said);
        play.status(Keeper::refused, "battery");
        if (state == Keeper::connecting) {
            EXPECT_THAT(play.said(), ElementsAre("refused: the battery is below the floor"));
        }
    }
}

TEST(HoldRun, ALossEndsTheCommandWhereThatIsAskedFor) {
    HoldRequest request = withMake;
    request.endsCommandOnLoss = request.persists = true;
    Played play(request);
    play.held();
    play.forget();
    play.status(Keeper::connecting, "battery");
    EXPECT_THAT(play.said(), ElementsAre("!the battery fell below the floor; ending make"));
    EXPECT_TRUE(play.did(Kind::signalCommand, SIGTERM));
    EXPECT_TRUE(play.did(Kind::giveUpHold));
    play.gaveUp(Outcome::restored);
    play.status(Keeper::holding);
    EXPECT_THAT(play.said(), IsEmpty());
    play.commandEnded({.signal = SIGTERM});
    EXPECT_TRUE(play.did(Kind::endBySignal, SIGTERM));
}

TEST(HoldRun, WithoutAHoldTheCommandRunsOnlyIfThatIsAskedFor) {
    for (const bool runsAnyway : {false, true}) {
        HoldRequest request = withMake;
        request.runsAnyway = runsAnyway;
        Played play(request);
        play.status(Keeper::refused, "pmset");
        EXPECT_EQ(play.did(Kind::startCommand), runsAnyway);
        play.gaveUp(Outcome::unknown, true);
        EXPECT_EQ(play.did(Kind::end, ExitStatus::withCommand), !runsAnyway);
        EXPECT_THAT(play.said(),
                    ElementsAre(runsAnyway
                                    ? "!refused: pmset could not disable sleep; running make "
                                      "without a hold"
                                    : "!refused: pmset could not disable sleep"));
    }
    for (const auto& [state, status] : {std::pair(Keeper::refused, ExitStatus::refused),
                                        std::pair(Keeper::unreachable, ExitStatus::unreachable)}) {
        Played play(alone);
        play.status(state);
        play.gaveUp(Outcome::unknown);
        EXPECT_TRUE(play.did(Kind::end, status));
    }
    HoldRequest request = alone;
    request.limits.onlyOnMains = true;
    HoldRun run(request, start);
    const auto actions = run.started({.now = start, .onMains = false});
    EXPECT_EQ(actions.front().text, "--ac-only: the Mac runs on its battery");
    EXPECT_EQ(run.state().end, HoldRun::End{.status = ExitStatus::refused});
}

TEST(HoldRun, TheEndTellsWhatBecameOfTheSetting) {
    struct Case {
        Keeper last;
        Outcome outcome;
        std::optional<bool> sleepDisabled;
        std::string said;
        int status;
    };

    const Case cases[] = {
        {Keeper::holding, Outcome::restored, false, "released", 0},
        {Keeper::holding, Outcome::restored, {}, "released", 0},
        {Keeper::holding, Outcome::restored, true,
         "sleep stays disabled, as it was before this hold", 0},
        {Keeper::riding, Outcome::restored, false, "ended; nobody holds", 0},
        {Keeper::riding, Outcome::notHeld, true, "ended; another client holds", 0},
        {Keeper::holding, Outcome::pending, true,
         "!the power daemon has not enabled sleep again yet; it keeps trying", 1},
        {Keeper::holding, Outcome::unknown, true,
         "!sleep may still be disabled: the power daemon did not answer", 1},
        {Keeper::holding,
         Outcome::unknown,
         {},
         "!sleep may still be disabled: the power daemon did not answer",
         1},
        {Keeper::holding, Outcome::unknown, false, "released", 0},
    };
    for (const auto& [last, outcome, sleepDisabled, said, status] : cases) {
        Played play(alone);
        play.status(last);
        play.forget();
        play.signal(SIGTERM);
        play.gaveUp(outcome, sleepDisabled);
        EXPECT_THAT(play.said(), ElementsAre(said));
        EXPECT_TRUE(play.did(Kind::end, status)) << said;

        Played command(withMake);
        command.status(last);
        command.commandEnded({.status = 0});
        command.gaveUp(outcome, sleepDisabled);
        EXPECT_TRUE(command.did(Kind::end, 0)) << "the command's own";
    }
}

TEST(HoldRun, OnlySecondsWithAHoldCount) {
    Played play(alone);
    play.now = {110};
    play.held();
    play.now = {130};
    play.status(Keeper::connecting, "battery");
    play.now = {195};
    EXPECT_EQ(play.run().awakeFor(play.now), 20);
    play.held();
    play.now = {200};
    EXPECT_EQ(play.run().awakeFor(play.now), 25);
    play.forget();
    play.signal(SIGINT);
    play.now = {210}; // the release took its time
    play.gaveUp(Outcome::restored);
    EXPECT_THAT(play.said(), ElementsAre("released; it was not held for 0:01:05"));
}

TEST(HoldRun, LimitsEndAHoldAndTheCommandRunsOn) {
    for (const HoldRequest& each : {alone, withMake}) {
        HoldRequest request = each;
        request.limits.seconds = 60;
        Played play(request);
        play.now = {start.seconds + 60};
        play.tick();
        EXPECT_FALSE(play.did(Kind::giveUpHold)) << "there is no hold to end yet";
        play.held();
        play.forget();
        play.tick();
        const bool runsOn = !each.command.empty();
        EXPECT_THAT(play.said(),
                    ElementsAre(runsOn ? "the hold is over: the time is over; make runs on"
                                       : "the hold is over: the time is over"));
        play.gaveUp(Outcome::unknown, true);
        EXPECT_EQ(play.did(Kind::end, ExitStatus::refused), !runsOn);
        EXPECT_THAT(
            play.said(),
            ElementsAre(runsOn ? "!sleep may still be disabled"
                               : "!sleep may still be disabled: the power daemon did not answer"));
    }
    HoldRequest tomorrow = alone;
    tomorrow.isQuiet = true;
    tomorrow.limits.until = WallTime{86400.0 * 3};
    HoldRun run(tomorrow, start);
    const auto actions = run.started({.now = start, .date = WallTime{86400.0 * 2}});
    EXPECT_EQ(actions.front().kind, Kind::complain) << "quiet or not";
}

TEST(HoldRun, WarnsOnceOfEnabledSleepAfterAskingTheDaemon) {
    Played play(alone);
    play.held();
    play.forget();
    play.tick({.sleepDisabled = false});
    EXPECT_TRUE(play.did(Kind::checkHold));
    play.tick({.sleepDisabled = false, .checkIsUnanswered = true});
    EXPECT_THAT(play.said(), IsEmpty());
    play.tick({.sleepDisabled = false});
    play.tick({.sleepDisabled = false});
    EXPECT_THAT(play.said(), ElementsAre("!sleep is enabled although the hold is in force: "
                                         "somebody else has enabled it"));
    play.tick({.sleepDisabled = true});
    play.status(Keeper::connecting, "released");
    play.forget();
    play.tick({.sleepDisabled = false});
    EXPECT_THAT(play.done(), IsEmpty()) << "there is no hold";
}

TEST(HoldRun, TheDisplayGoesOffEachTimeTheLidHasBeenShutForASecond) {
    HoldRequest request = alone;
    request.displayOff = true;
    Played play(request);
    play.held();
    for (int times = 0; times < 2; ++times) {
        play.forget();
        play.tick({.lidWouldSleep = true});
        play.now = {play.now.seconds + 0.9};
        play.tick({.lidWouldSleep = true});
        EXPECT_THAT(play.done(), IsEmpty());
        play.now = {play.now.seconds + 0.1};
        play.tick({.lidWouldSleep = true});
        play.tick({.lidWouldSleep = true});
        EXPECT_THAT(play.done(), ElementsAre(Kind::turnDisplayOff));
        play.tick();
    }
}

TEST(HoldRun, AWaitIsToldWhileItLasts) {
    HoldRequest behind = alone;
    behind.readyDescriptor = 3;
    Played play(behind);
    play.take(play.run().answerIsLate());
    EXPECT_THAT(play.said(), ElementsAre("!waiting for the power daemon to answer"));
    Played front(alone);
    front.take(front.run().answerIsLate());
    EXPECT_THAT(front.said(), ElementsAre("waiting for the power daemon to answer"));
    front.held();
    front.forget();
    front.take(front.run().answerIsLate());
    EXPECT_THAT(front.said(), IsEmpty());
}

TEST(HoldRun, GivesUpTheHoldIfItsFrontIsGone) {
    HoldRequest behind = withMake;
    behind.readyDescriptor = 3;
    Played waiting(behind);
    waiting.tick({.frontIsGone = true});
    EXPECT_TRUE(waiting.did(Kind::giveUpHold));
    Played play(behind);
    play.held();
    EXPECT_TRUE(play.did(Kind::tellFront));
    play.take(play.run().frontTold(false, play.now));
    EXPECT_FALSE(play.did(Kind::startCommand));
    play.gaveUp(Outcome::restored);
    EXPECT_TRUE(play.did(Kind::end, ExitStatus::withCommand));
    Played told(behind);
    told.held();
    told.take(told.run().frontTold(true, told.now));
    told.tick({.frontIsGone = true});
    EXPECT_TRUE(told.did(Kind::startCommand));
    EXPECT_EQ(told.run().state().end, std::nullopt);
}

/// A run with all that it meets, at one moment of any order of events.
struct World {
    enum class Command { none, running, ended };

    HoldRun run;
    bool hasAsked = false;    ///< for a hold, and not given it up
    bool isReleasing = false; ///< `gaveUp` is due
    bool isStopped = false;
    bool frontIsThere = true;
    bool isHeld = false;
    bool hasRun = false;
    Command command = Command::none;
    std::optional<HoldRun::End> ownEnd; ///< the command's
    std::optional<HoldRun::Action> end;

    [[nodiscard]] auto key() const {
        const HoldRun::State& state = run.state();
        return std::tuple(state.command, state.keeper, state.wantsHold, state.isGivingUp,
                          state.frontWaits, state.enabledIsTold, state.enabledIsChecked,
                          state.stopsBy, state.end, state.endsSince, state.firstAwake,
                          state.awakeSince, state.awakeBefore, hasAsked, isReleasing, isStopped,
                          frontIsThere, isHeld, hasRun, command, ownEnd, end.has_value());
    }

    void take(const HoldRun::Actions& actions, SteadyTime now) {
        for (const auto& action : actions) {
            ASSERT_FALSE(end) << "an action after the end";
            perform(action, now);
        }
    }

    void perform(const HoldRun::Action& action, SteadyTime now) {
        switch (action.kind) {
        case Kind::askForHold:
            EXPECT_FALSE(hasAsked);
            hasAsked = true;
            break;
        case Kind::giveUpHold:
            EXPECT_FALSE(isReleasing);
            isReleasing = true;
            isHeld = false;
            break;
        case Kind::startCommand:
            EXPECT_FALSE(std::exchange(hasRun, true));
            command = Command::running;
            take(run.commandStarted(), now);
            break;
        case Kind::tellFront:
            take(run.frontTold(frontIsThere, now), now);
            break;
        case Kind::signalCommand:
            EXPECT_EQ(command, Command::running);
            break;
        case Kind::stopSelf:
            EXPECT_FALSE(hasAsked) << "stopped with a hold";
            isStopped = true;
            break;
        case Kind::end:
        case Kind::endBySignal:
            EXPECT_FALSE(hasAsked) << "ended without a release";
            [[fallthrough]];
        case Kind::endAtOnce:
            EXPECT_NE(command, Command::running) << "a command that is left alone";
            end = action;
            expectOwnEnd(action);
            break;
        default:
            break;
        }
    }

    void expectOwnEnd(const HoldRun::Action& action) const {
        if (!ownEnd)
            return;
        const int status =
            ownEnd->signal != 0 ? ExitStatus::bySignal + ownEnd->signal : ownEnd->status;
        const int told =
            action.kind == Kind::endBySignal ? ExitStatus::bySignal + action.number : action.number;
        EXPECT_EQ(told, status);
    }
};

/// Calls back with the world after each event that may come next.
void forEachNext(const World& world, const std::function<void(World)>& callback) {
    const auto after = [&](SteadyTime now, auto event) {
        World next = world;
        next.take(event(next), now);
        callback(std::move(next));
    };
    const SteadyTime now = start;
    if (world.end)
        return;
    if (world.isStopped) {
        after(now, [](World& w) { return w.isStopped = false, w.run.continued(); });
        return;
    }
    if (world.isReleasing)
        for (const Outcome outcome :
             {Outcome::restored, Outcome::notHeld, Outcome::pending, Outcome::unknown})
            for (const bool property : {false, true})
                after(now, [&](World& w) {
                    w.isReleasing = w.hasAsked = false;
                    return w.run.gaveUp(outcome, property);
                });
    else if (world.hasAsked)
        for (const HoldKeeper::Status& status :
             {HoldKeeper::Status{.state = Keeper::connecting},
              {.state = Keeper::connecting, .reason = "battery"},
              {.state = Keeper::holding},
              {.state = Keeper::riding},
              {.state = Keeper::refused, .reason = "battery"},
              {.state = Keeper::unreachable},
              {.state = Keeper::released, .reason = "released by another"}})
            after(now, [&](World& w) {
                const bool isHeld =
                    status.state == Keeper::holding || status.state == Keeper::riding;
                const bool isLost =
                    std::exchange(w.isHeld, isHeld) && !isHeld
                    && (status.state != Keeper::connecting || !status.reason.empty());
                auto actions = w.run.statusChanged(status, now);
                EXPECT_TRUE(!isLost || std::ranges::any_of(actions, [](const auto& each) {
                    return each.kind == Kind::complain;
                })) << "a loss that is not told";
                return actions;
            });
    if (world.command == World::Command::running) {
        for (const HoldRun::End& end : {HoldRun::End{.status = 5}, HoldRun::End{.signal = SIGKILL}})
            after(now, [&](World& w) {
                w.command = World::Command::ended;
                w.ownEnd = end;
                return w.run.commandEnded(end, now);
            });
        after(now, [&](World& w) { return w.run.commandStopped(SIGTTIN, now); });
    }
    // Only a signal during the end depends on the time.
    for (const SteadyTime then : {now, SteadyTime{now.seconds + (world.run.state().end ? 5 : 0)}})
        for (const int number : {SIGTERM, SIGHUP, SIGTSTP})
            after(then, [&](World& w) {
                return w.run.signalled({.number = number, .fromTerminal = number == SIGHUP}, then);
            });
    after(now, [&](World& w) { return w.frontIsThere = false, HoldRun::Actions(); });
    for (const HoldRun::Facts& facts : {HoldRun::Facts{.sleepDisabled = true},
                                        {.limits = {.processHasEnded = true}},
                                        {.sleepDisabled = false},
                                        {.sleepDisabled = false, .checkIsUnanswered = true}})
        after(now, [&](World& w) {
            HoldRun::Facts seen = facts;
            seen.limits.now = now;
            seen.frontIsGone = !w.frontIsThere;
            return w.run.ticked(seen);
        });
}

/// Ends everything from outside, in the order that always works.
void endAll(World world) {
    const SteadyTime later{start.seconds + 60};
    for (int i = 0; i < 4 && !world.end; ++i) {
        if (std::exchange(world.isStopped, false))
            world.take(world.run.continued(), later);
        if (!world.end)
            world.take(world.run.signalled({.number = SIGTERM}, later), later);
        if (world.command == World::Command::running) {
            world.command = World::Command::ended;
            world.ownEnd = HoldRun::End{.signal = SIGTERM};
            world.take(world.run.commandEnded(*world.ownEnd, later), later);
        }
        if (!world.end && world.isReleasing) {
            world.isReleasing = world.hasAsked = false;
            world.take(world.run.gaveUp(Outcome::unknown, std::nullopt), later);
        }
    }
    EXPECT_TRUE(world.end) << "a run that can't be ended";
}

TEST(HoldRun, KeepsItsRulesInEveryOrderOfEvents) {
    std::size_t states = 0;
    for (int options = 0; options < 16; ++options) {
        HoldRequest request = (options & 1) != 0 ? withMake : alone;
        const bool hasCommand = !request.command.empty();
        request.runsAnyway = hasCommand && (options & 2) != 0;
        request.endsCommandOnLoss = hasCommand && (options & 4) != 0;
        request.limits.process = 7;
        if ((options & 8) != 0)
            request.readyDescriptor = 3;

        World first{.run = HoldRun(request, start)};
        first.take(first.run.started({.now = start}), start);
        std::set<decltype(first.key())> seen{first.key()};
        std::deque<World> open{first};
        while (!open.empty()) {
            endAll(open.front());
            forEachNext(open.front(), [&](World next) {
                if (seen.insert(next.key()).second)
                    open.push_back(std::move(next));
            });
            open.pop_front();
            ASSERT_FALSE(HasFailure());
        }
        states += seen.size();
    }
    RecordProperty("states", std::to_string(states));
    EXPECT_GT(states, 1000U);
}

} // namespace
} // namespace velmo
