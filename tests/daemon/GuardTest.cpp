#include "daemon/Guard.h"

#include "lab/instruments/GuardedMac.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Pmset = FakeMachine::Pmset;

constexpr ClientId first{1};
constexpr ClientId second{2};
const Guard::HoldResult granted;

constexpr const char* on = "pmset -a disablesleep 1";
constexpr const char* off = "pmset -a disablesleep 0";
constexpr const char* read = "pmset -g";
constexpr const char* disabledLog = "sleep disabled (closed lid) for a Velmo client";
constexpr const char* removed = "record removed";

Guard::HoldResult refused(HoldRefusal reason) {
    return std::unexpected(reason);
}

class GuardTest : public testing::Test, protected GuardedMac {
protected:
    void holdFirst(std::int64_t floor = 20) {
        ASSERT_EQ(guard->hold(first, floor), granted);
        takeEvents();
    }

    /// Returns the events, with a repeated one only once, because pmset is asked several times for
    /// a setting that may still come.
    Events takeDistinctEvents() {
        Events taken = takeEvents();
        const auto rest = std::ranges::unique(taken);
        taken.erase(rest.begin(), rest.end());
        return taken;
    }

    void expectFree() {
        EXPECT_EQ(guard->state().holder, std::nullopt);
        EXPECT_EQ(guard->state().heldPrevious, std::nullopt);
        EXPECT_EQ(records.record, std::nullopt);
    }
};

TEST_F(GuardTest, RecordsTheSettingBeforeItTouchesIt) {
    EXPECT_EQ(guard->state(), (Guard::State{.idleSince = {1000}}));
    EXPECT_EQ(guard->hold(first, 30), granted);
    EXPECT_THAT(takeEvents(), ElementsAre("record: enabled", on, disabledLog));
    EXPECT_TRUE(machine.sleepDisabled);
    EXPECT_EQ(records.record, (PowerDaemonRecord{.previous = false, .since = machine.date}));
    EXPECT_EQ(guard->state(), (Guard::State{.holder = first,
                                            .heldPrevious = false,
                                            .floor = 30,
                                            .lastBeat = {1000},
                                            .idleSince = {1000}}));

    EXPECT_TRUE(guard->revert(RevertReason::released));
    EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (released)"));
    EXPECT_FALSE(machine.sleepDisabled);
    expectFree();
}

TEST_F(GuardTest, LeavesSleepDisabledWhereItWasBefore) {
    machine.sleepDisabled = true;
    EXPECT_EQ(guard->hold(first, 20), granted);
    EXPECT_THAT(takeEvents(), ElementsAre("record: disabled", disabledLog));
    EXPECT_TRUE(guard->revert(RevertReason::released));
    EXPECT_THAT(takeEvents(), ElementsAre(removed, "sleep enabled again (released)"));
    EXPECT_TRUE(machine.sleepDisabled);
    expectFree();
}

TEST_F(GuardTest, RefusesWithItsReasonAndLeavesNothingBehind) {
    struct Case {
        HoldRefusal reason;
        std::function<void()> fault;
        Events done;
    };

    const Case cases[] = {
        {.reason = HoldRefusal::battery,
         .fault = [&] { machine.mains = false, machine.battery = 19; }},
        {.reason = HoldRefusal::thermal, .fault = [&] { machine.thermal = ThermalState::serious; }},
        {.reason = HoldRefusal::unreadable,
         .fault = [&] { machine.propertyReadable = false, machine.pmsetRead = Pmset::fails; },
         .done = {read}},
        {.reason = HoldRefusal::record,
         .fault = [&] { records.writable = false; },
         .done = {"record: enabled"}},
        {.reason = HoldRefusal::pmset,
         .fault = [&] { machine.pmsetOn = Pmset::fails; },
         .done = {"record: enabled", on, off, removed}},
        {.reason = HoldRefusal::pmset,
         .fault = [&] { machine.pmsetOn = Pmset::lies; },
         .done = {"record: enabled", on, off, removed}},
        {.reason = HoldRefusal::pmset,
         .fault = [&] { machine.pmsetOn = Pmset::lies, machine.propertyReadable = false; },
         .done = {read, "record: enabled", on, read, off, removed}},
    };
    for (const auto& [reason, fault, done] : cases) {
        machine = FakeMachine(events);
        records.writable = true;
        fault();
        EXPECT_EQ(guard->hold(first, 20), refused(reason));
        EXPECT_EQ(takeDistinctEvents(), done) << rawText(reason);
        EXPECT_FALSE(machine.sleepDisabled) << rawText(reason);
        expectFree();
    }
}

TEST_F(GuardTest, RefusesAHoldIfTheSettingCannotBeReadBack) {
    machine.propertyReadable = false;
    machine.readings = 1; // before pmset has run, and none after it
    EXPECT_EQ(guard->hold(first, 20), refused(HoldRefusal::pmset));
    EXPECT_THAT(takeDistinctEvents(), ElementsAre(read, "record: enabled", on, read, off, removed));
    expectFree();

    machine = FakeMachine(events);
    holdFirst();
    machine.propertyReadable = false;
    machine.readings = 0;
    EXPECT_FALSE(guard->revert(RevertReason::released));
    EXPECT_EQ(guard->state().heldPrevious, false);

    // A setting that is missing for a moment is looked for again.
    machine.propertyReadable = true;
    machine.blindReadings = 1;
    EXPECT_TRUE(guard->revert(RevertReason::released));
    expectFree();
}

TEST_F(GuardTest, KeepsTheRecordAndRetriesAnUndoThatFails) {
    machine.pmsetOn = Pmset::worksAndFails;
    machine.pmsetOff = Pmset::fails;
    EXPECT_EQ(guard->hold(first, 20), refused(HoldRefusal::pmset));
    EXPECT_TRUE(machine.sleepDisabled);
    EXPECT_THAT(takeEvents(), ElementsAre("record: enabled", on, off));
    machine.pmsetOff = Pmset::works;
    tick();
    EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (retry)"));
    EXPECT_FALSE(machine.sleepDisabled);
    expectFree();

    // The setting takes longer than the guard waits, and lands after its undo has failed.
    machine.pmsetOn = Pmset::works;
    machine.pmsetOff = Pmset::fails;
    machine.lateness = 2.5;
    EXPECT_EQ(guard->hold(first, 20), refused(HoldRefusal::pmset));
    EXPECT_THAT(takeEvents(), ElementsAre("record: enabled", on, off, read));
    machine.pmsetOff = Pmset::works;
    machine.lateness = 0;
    tickAfter(1);
    EXPECT_FALSE(machine.sleepDisabledProperty().value());
    expectFree();
}

TEST_F(GuardTest, AgesAHoldFromTheMomentItIsGranted) {
    machine.snapshotTakes = PowerGuardPolicy::heartbeatTimeout + 1;
    EXPECT_EQ(guard->hold(first, 20), granted);
    EXPECT_EQ(guard->hold(first, 40), granted);
    machine.snapshotTakes = 0;
    tick();
    EXPECT_EQ(guard->state().holder, first);
}

TEST_F(GuardTest, WaitsForASettingThatLandsLate) {
    for (const auto& [lateness, inTime] : {std::pair(0.02, true), {1.99, true}, {2.1, false}}) {
        SCOPED_TRACE(lateness);
        machine = FakeMachine(events);
        machine.lateness = lateness;
        const double start = machine.clock;
        EXPECT_EQ(guard->hold(first, 20), inTime ? granted : refused(HoldRefusal::pmset));
        EXPECT_LE(machine.clock - start, inTime ? lateness + 0.03 : 4.1);
        if (!inTime)
            continue;
        EXPECT_EQ(machine.sleepDisabledProperty(), true);
        EXPECT_TRUE(guard->revert(RevertReason::released));
        EXPECT_EQ(machine.sleepDisabledProperty(), false);
        expectFree();
    }
    // pmset prints the preferences, which decide at once.
    machine = FakeMachine(events);
    machine.lateness = 10;
    machine.propertyReadable = false;
    const double start = machine.clock;
    EXPECT_EQ(guard->hold(first, 20), granted);
    EXPECT_EQ(machine.clock, start);
}

TEST_F(GuardTest, RestoresFromMemoryIfTheRecordIsLost) {
    const std::function<void()> losses[] = {[&] { records.record.reset(); },
                                            [&] { records.damaged = true; }};
    for (const auto& lose : losses) {
        records.damaged = false;
        holdFirst();
        lose();
        EXPECT_TRUE(guard->revert(RevertReason::released));
        EXPECT_FALSE(machine.sleepDisabled);
        expectFree();
    }
}

TEST_F(GuardTest, ReadsTheSettingFromPmsetOnlyWhereThePropertyIsMissing) {
    machine.propertyReadable = false;
    EXPECT_EQ(guard->hold(first, 20), granted);
    EXPECT_THAT(takeEvents(), ElementsAre(read, "record: enabled", on, read, disabledLog));
    EXPECT_TRUE(guard->revert(RevertReason::released));
    EXPECT_THAT(takeEvents(), ElementsAre(off, read, removed, "sleep enabled again (released)"));
}

TEST_F(GuardTest, RefusesASecondClientAsBusy) {
    holdFirst(20);
    machine.clock += 10;
    EXPECT_EQ(guard->hold(first, 40), granted);
    const Guard::State renewed = guard->state();
    EXPECT_EQ(renewed.floor.percent(), 40);
    EXPECT_EQ(renewed.lastBeat, SteadyTime{1010});
    machine.thermal = ThermalState::critical;
    machine.clock += 5;
    EXPECT_EQ(guard->hold(second, 50), refused(HoldRefusal::busy));
    EXPECT_FALSE(guard->heartbeat(second));
    EXPECT_EQ(guard->state(), renewed);
    EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(GuardTest, ARefusedRenewalEndsTheHold) {
    holdFirst();
    machine.thermal = ThermalState::serious;
    machine.clock += 5;
    EXPECT_EQ(guard->hold(first, 20), refused(HoldRefusal::thermal));
    EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (thermal)"));
    EXPECT_EQ(guard->state().idleSince, SteadyTime{1005});
    expectFree();
}

TEST_F(GuardTest, TicksEndAHoldForItsReason) {
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"heartbeat", [&] { machine.clock += 0.5; }},
        {"battery", [&] { machine.mains = false, machine.battery = 19; }},
        {"thermal", [&] { machine.thermal = ThermalState::serious; }},
    };
    for (const auto& [reason, change] : cases) {
        machine = FakeMachine(events);
        holdFirst();
        tickAfter(35);
        EXPECT_THAT(takeEvents(), IsEmpty()) << reason;
        change();
        tick();
        EXPECT_THAT(takeEvents(),
                    ElementsAre(off, removed, "sleep enabled again (" + reason + ")"));
        expectFree();
    }
}

TEST_F(GuardTest, RetriesUntilSleepIsEnabledAgain) {
    for (const Pmset fault : {Pmset::fails, Pmset::lies}) {
        machine.breakPmset(Pmset::works);
        holdFirst();
        machine.breakPmset(fault);
        EXPECT_FALSE(guard->revert(RevertReason::clientGone));
        EXPECT_THAT(takeEvents(), ElementsAre(off, "could not re-enable sleep (client gone); "
                                                   "retrying"));
        EXPECT_EQ(guard->state().holder, std::nullopt);
        EXPECT_EQ(guard->state().heldPrevious, false);

        tickAfter(61); // idle, but never while something is to be restored
        EXPECT_THAT(takeEvents(), ElementsAre(off, "could not re-enable sleep (retry); retrying"));
        EXPECT_THAT(exits, IsEmpty());

        machine.breakPmset(Pmset::works);
        tick();
        EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (retry)"));
        EXPECT_FALSE(machine.sleepDisabled);
        expectFree();
    }
}

TEST_F(GuardTest, AHoldTakesOverWhatIsStillToBeRestored) {
    holdFirst();
    machine.breakPmset(Pmset::fails);
    guard->revert(RevertReason::clientGone);
    takeEvents();
    EXPECT_EQ(guard->hold(second, 20), granted);
    EXPECT_THAT(takeEvents(), IsEmpty());
    machine.breakPmset(Pmset::works);
    EXPECT_TRUE(guard->revert(RevertReason::released));
    EXPECT_FALSE(machine.sleepDisabled);
    expectFree();

    records.record = PowerDaemonRecord{.previous = true, .since = 1}; // as a crash leaves it
    takeEvents();
    EXPECT_EQ(guard->hold(first, 20), granted);
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_EQ(guard->state().heldPrevious, true);
}

TEST_F(GuardTest, DisablesSleepAgainIfThePendingRestoreTookEffect) {
    holdFirst();
    machine.pmsetOff = Pmset::worksAndFails;
    EXPECT_FALSE(guard->revert(RevertReason::released));
    takeEvents();
    machine.pmsetOn = Pmset::fails;
    EXPECT_EQ(guard->hold(second, 20), refused(HoldRefusal::pmset));
    EXPECT_THAT(takeEvents(), ElementsAre(on));
    EXPECT_EQ(guard->state().holder, std::nullopt);
    EXPECT_EQ(guard->state().heldPrevious, false);
    EXPECT_TRUE(records.record);

    machine.pmsetOn = Pmset::works;
    EXPECT_EQ(guard->hold(second, 20), granted);
    EXPECT_THAT(takeEvents(), ElementsAre(on, disabledLog));
    EXPECT_TRUE(machine.sleepDisabled);
    machine.sleepDisabled = false; // by hand, and perhaps on purpose
    EXPECT_EQ(guard->hold(second, 30), granted);
    EXPECT_THAT(takeEvents(), IsEmpty());

    machine.sleepDisabled = true;
    EXPECT_FALSE(guard->revert(RevertReason::released));
    takeEvents();
    machine.propertyReadable = false; // nothing tells: nothing is run
    EXPECT_EQ(guard->hold(first, 20), granted);
    EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(GuardTest, TheTickRestoresFromARecordLeftOnDisk) {
    records.record = PowerDaemonRecord{.previous = false, .since = 1};
    records.removable = false;
    machine.sleepDisabled = true;
    for (int i = 0; i < 2; ++i) {
        tickAfter(61);
        EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (retry)"));
        EXPECT_THAT(exits, IsEmpty());
    }
}

TEST_F(GuardTest, ExitsAMinuteAfterTheLastHoldEnds) {
    holdFirst();
    for (int i = 0; i < 3; ++i) {
        tickAfter(30);
        EXPECT_TRUE(guard->heartbeat(first));
    }
    tickAfter(34);
    EXPECT_EQ(guard->state().holder, first);
    EXPECT_THAT(takeEvents(), IsEmpty());
    guard->revert(RevertReason::released);
    EXPECT_FALSE(guard->heartbeat(first));
    tickAfter(60);
    EXPECT_THAT(exits, IsEmpty());
    tickAfter(1);
    EXPECT_THAT(exits, ElementsAre(0));
}

TEST_F(GuardTest, ARecordThatCannotBeDecodedIsLeftInPlace) {
    records.record = PowerDaemonRecord{};
    records.damaged = true;
    guard->recover();
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_TRUE(guard->report(first).recordIsUnreadable);
    EXPECT_TRUE(guard->revert(RevertReason::released));
    tickAfter(61);
    EXPECT_THAT(exits, ElementsAre(0));
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_TRUE(records.record);
    records.damaged = false;
    EXPECT_FALSE(guard->report(first).recordIsUnreadable);
}

TEST_F(GuardTest, ReportsSleepThatIsEnabledDuringAHold) {
    holdFirst();
    for (int hold = 0; hold < 2; ++hold) {
        tick();
        EXPECT_THAT(takeEvents(), IsEmpty());
        machine.sleepDisabled = false;
        machine.propertyReadable = false;
        tick();
        EXPECT_THAT(takeEvents(), IsEmpty()); // pmset is not asked
        machine.propertyReadable = true;
        for (int i = 0; i < 3; ++i)
            tick();
        EXPECT_THAT(takeEvents(), ElementsAre("sleep is enabled although a client holds"));
        EXPECT_EQ(guard->report(first).sleepDisabled, false);
        EXPECT_EQ(guard->state().holder, first);
        guard->revert(RevertReason::released);
        EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (released)"));
        holdFirst();
    }
}

TEST_F(GuardTest, WritesTheLastEndOnceSleepIsEnabledAgain) {
    holdFirst();
    machine.pmsetOff = Pmset::fails;
    machine.thermal = ThermalState::serious;
    tick();
    tickAfter(5);
    EXPECT_EQ(records.lastEnd, std::nullopt);
    const HoldEnd hot{.how = "thermal", .at = machine.date};
    EXPECT_EQ(guard->report(first).lastEnd, hot);
    machine.date += 60;
    machine = FakeMachine(events);
    tick();
    EXPECT_EQ(records.lastEnd, hot);
    EXPECT_FALSE(records.wroteEndOverRecord);

    // The end is not written while the next hold is in force.
    holdFirst();
    guard->release(first);
    holdFirst();
    queue.runAll();
    EXPECT_EQ(records.lastEnd, hot);

    machine.pmsetOff = Pmset::fails; // the next start must know that this was not a crash
    guard->stop();
    EXPECT_EQ(records.lastEnd, (HoldEnd{.how = "stopping", .at = machine.date}));
    EXPECT_TRUE(records.wroteEndOverRecord);
}

TEST_F(GuardTest, ReportsACrashForARecordWithoutAnEnd) {
    const HoldEnd told{.how = "stopping", .at = 50};
    const HoldEnd crashed{.how = "crashed", .at = machine.date};

    struct Case {
        std::optional<PowerDaemonRecord> left;
        std::optional<HoldEnd> written;
        std::optional<HoldEnd> recalled;
    };

    const Case cases[] = {
        {.left = {}, .written = {}, .recalled = {}},
        {.left = {}, .written = told, .recalled = told},
        {.left = {{.previous = false, .since = 40}}, .written = {}, .recalled = crashed},
        {.left = {{.previous = false, .since = 40}}, .written = told, .recalled = told},
        {.left = {{.previous = true, .since = 60}}, .written = told, .recalled = crashed},
    };
    for (const auto& [left, written, recalled] : cases) {
        records.record = left;
        records.lastEnd = written;
        guard = newGuard("requirement");
        machine.pmsetOff = Pmset::fails;
        guard->recover();
        EXPECT_EQ(guard->report(first), (HoldReport{.pending = left && !left->previous,
                                                    .sleepDisabled = false,
                                                    .lastEnd = recalled}));
        machine.pmsetOff = Pmset::works;
        tick();
        EXPECT_EQ(records.lastEnd, recalled);
        EXPECT_FALSE(records.wroteEndOverRecord);
    }
}

TEST_F(GuardTest, RecoversWhatACrashLeftBehind) {
    guard->recover();
    EXPECT_THAT(takeEvents(), IsEmpty());

    const std::string found = "a hold was left behind; sleep back";
    machine.sleepDisabled = true;
    records.record = PowerDaemonRecord{.previous = false, .since = 1};
    guard->recover();
    EXPECT_THAT(takeEvents(), ElementsAre(found, off, removed, "sleep enabled again (recovered)"));
    EXPECT_FALSE(machine.sleepDisabled);

    machine.sleepDisabled = true;
    records.record = PowerDaemonRecord{.previous = true, .since = 1};
    guard->recover();
    EXPECT_THAT(takeEvents(), ElementsAre(found, removed, "sleep enabled again (recovered)"));
    EXPECT_TRUE(machine.sleepDisabled);
    expectFree();
}

TEST_F(GuardTest, MeasuresAgesWithTheSteadyClock) {
    holdFirst();
    for (const double change : {-1e9, 2e9}) {
        machine.date += change;
        tickAfter(20);
        EXPECT_TRUE(guard->heartbeat(first));
    }
    EXPECT_THAT(takeEvents(), IsEmpty());
    machine.date -= 1e9;
    tickAfter(36);
    EXPECT_THAT(takeEvents(), ElementsAre(off, removed, "sleep enabled again (heartbeat)"));
}

TEST_F(GuardTest, OneTickIsOutstandingAtATime) {
    holdFirst();
    machine.thermal = ThermalState::serious;
    machine.breakPmset(Pmset::fails);
    for (int i = 0; i < 100; ++i)
        guard->tick();
    queue.runAll();
    EXPECT_THAT(takeEvents(), ElementsAre(off, "could not re-enable sleep (thermal); retrying"));
    tick();
    EXPECT_THAT(takeEvents(), ElementsAre(off, "could not re-enable sleep (retry); retrying"));
}

TEST_F(GuardTest, RefusesHoldsAfterTheLastRestore) {
    holdFirst();
    guard->revert(RevertReason::released);
    takeEvents();
    Guard::HoldResult inFront;
    queue.async([&] { inFront = guard->hold(first, 20); });
    queue.behindSync = [&] {
        EXPECT_THAT(exits, ElementsAre(0)); // on a Mac nothing runs after it
        EXPECT_EQ(guard->hold(second, 20), refused(HoldRefusal::gone));
    };
    guard->stop();
    EXPECT_EQ(inFront, refused(HoldRefusal::gone));
    EXPECT_THAT(exits, ElementsAre(0));
    EXPECT_FALSE(machine.sleepDisabled);
}

class LidTest : public GuardTest {
protected:
    LidTest() { machine.lidState = {.isShut = true, .causesSleep = true}; }

    void endHold(RevertReason reason = RevertReason::released) {
        holdFirst();
        guard->revert(reason);
        takeEvents();
    }

    static constexpr const char* asked = "asking the Mac to sleep: its lid is shut";
};

TEST_F(LidTest, AsksForSleepHalfAMinuteAfterTheHold) {
    endHold();
    tickAfter(29.9);
    EXPECT_THAT(takeEvents(), IsEmpty());
    machine.takesRequests = false;
    tickAfter(0.1);
    EXPECT_THAT(takeEvents(), ElementsAre(asked, "sleep!"));
    machine.takesRequests = true;
    tickAfter(5);
    EXPECT_THAT(takeEvents(), ElementsAre(asked, "sleep!"));
    tickAfter(5);
    EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(LidTest, AsksForNoSleepUnlessAShutLidCausesIt) {
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"open", [&] { machine.lidState->isShut = false; }},
        {"on an external display", [&] { machine.lidState->causesSleep = false; }},
        {"no lid", [&] { machine.lidState.reset(); }},
        {"sleep disabled by somebody else", [&] { machine.sleepDisabled = true; }},
    };
    for (const auto& [what, change] : cases) {
        machine = FakeMachine(events);
        machine.lidState = {.isShut = true, .causesSleep = true};
        endHold();
        change();
        tickAfter(30);
        EXPECT_THAT(takeEvents(), IsEmpty()) << what;
        machine.lidState = {.isShut = true, .causesSleep = true};
        machine.sleepDisabled = false;
        tickAfter(5);
        EXPECT_THAT(takeEvents(), IsEmpty()) << what;
    }
}

TEST_F(LidTest, StartsTheWaitAgainAfterAnotherHold) {
    endHold();
    machine.clock += 20;
    EXPECT_EQ(guard->hold(second, 20), granted);
    machine.thermal = ThermalState::serious;
    tickAfter(20);
    EXPECT_EQ(takeEvents().back(), "sleep enabled again (thermal)");
    EXPECT_EQ(guard->hold(first, 20), refused(HoldRefusal::thermal)); // moves nothing
    tickAfter(29);
    EXPECT_THAT(takeEvents(), IsEmpty());
    tickAfter(1);
    EXPECT_THAT(takeEvents(), ElementsAre(asked, "sleep!"));
}

TEST_F(LidTest, AsksForNoSleepIfSleepWasDisabledBefore) {
    endHold();
    machine.sleepDisabled = true;
    endHold();
    machine.sleepDisabled = false;
    tickAfter(40);
    EXPECT_THAT(takeEvents(), IsEmpty());
    endHold(RevertReason::stopping);
    tickAfter(40);
    EXPECT_THAT(takeEvents(), IsEmpty());
}

} // namespace
} // namespace velmo
