#include "daemon/Guard.h"

#include "machine/PowerReadings.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

/// Returns how a hold that is reverted for this reason has ended; absent if the reason ends none.
std::optional<HoldEnding> endingOf(RevertReason reason) {
    switch (reason) {
    case RevertReason::heartbeat:
        return HoldEnding::heartbeat;
    case RevertReason::battery:
        return HoldEnding::battery;
    case RevertReason::thermal:
        return HoldEnding::thermal;
    case RevertReason::clientGone:
        return HoldEnding::clientGone;
    case RevertReason::released:
        return HoldEnding::released;
    case RevertReason::stopping:
        return HoldEnding::stopping;
    case RevertReason::retry:
    case RevertReason::recovered:
        break;
    }
    return std::nullopt;
}

} // namespace

Guard::Guard(Services services, std::optional<std::string> requirement)
    : services_(std::move(services)),
      requirement_(std::move(requirement)),
      state_{.idleSince = services_.machine.steadyTime()} {
}

bool Guard::acceptConnection(const std::shared_ptr<ClientConnection>& connection,
                             MakeSession& makeSession) {
    if (!requirement_) {
        services_.log("unsigned daemon: refusing every caller");
        return false;
    }
    if (!connection->requireCodeSignature(*requirement_))
        return false;
    connection->exportSession(makeSession(weak_from_this(), connection));
    connection->onInvalidation([weak = weak_from_this(), who = connection->id()] {
        if (const auto guard = weak.lock())
            guard->queue().async([guard, who] { guard->connectionLost(who); });
    });
    // Posted before the connection can be lost, so that it is never counted down before up.
    queue().async([guard = shared_from_this(), who = connection->id(),
                   processId = connection->processId(), program = connection->programName()] {
        ++guard->state_.connections;
        guard->ledger_.connected(who, processId, program);
    });
    connection->resume();
    return true;
}

void Guard::connectionLost(ClientId who) {
    state_.connections = std::max(state_.connections - 1, 0);
    if (state_.holder == who)
        revert(RevertReason::clientGone);
    ledger_.disconnected(who);
}

void Guard::tick() {
    if (tickIsOutstanding_.exchange(true))
        return;
    queue().async([guard = shared_from_this()] {
        if (guard->state_.holder)
            guard->checkHolder();
        else
            guard->checkFree();
        guard->tickIsOutstanding_ = false;
    });
}

void Guard::stop() {
    isStopping_ = true;
    queue().sync([this] {
        // A failed restore leaves its record for the next start, which the next client brings about
        // by launchd.
        revert(RevertReason::stopping);
        saveLastEnd();
        services_.exitProcess(0);
    });
}

void Guard::checkHolder() {
    PowerGuardPolicy::Facts facts = readFacts(state_.floor);
    facts.lastBeat = state_.lastBeat;
    if (const auto reason = PowerGuardPolicy::check(facts))
        revert(PowerGuardPolicy::revertReason(*reason));
    else
        noticeEnabledSleep();
}

/// Logs that another program has enabled sleep during the hold. The guard leaves sleep enabled,
/// because that program may have meant it. Reads only the property, because pmset may hang.
void Guard::noticeEnabledSleep() {
    if (state_.enablingIsLogged || services_.machine.sleepDisabledProperty() != false)
        return;
    state_.enablingIsLogged = true;
    services_.log("sleep is enabled although a client holds");
}

/// Reads what the policy decides by, with the last heartbeat set to now. The clock is read once: it
/// goes on while the Mac sleeps, which it may do between two readings.
PowerGuardPolicy::Facts Guard::readFacts(BatteryFloor floor) {
    const PowerReading reading = readPower(services_.machine);
    const SteadyTime now = services_.machine.steadyTime();
    return {.onAC = reading.ac,
            .battery = reading.battery,
            .floor = floor,
            .thermalRaw = services_.machine.thermalState(),
            .lastBeat = now,
            .now = now};
}

void Guard::checkFree() {
    if (state_.heldPrevious || services_.records.read()) {
        revert(RevertReason::retry);
        return;
    }
    checkLid();
    if (services_.machine.steadyTime() - state_.idleSince > PowerGuardPolicy::idleExit)
        services_.exitProcess(0);
}

/// Asks the Mac to sleep if its lid was shut during the hold. The system looks at the lid only when
/// it moves, so the Mac would otherwise stay awake in its bag.
void Guard::checkLid() {
    PowerMachine& machine = services_.machine;
    if (!state_.sleepOwedSince || machine.steadyTime() - *state_.sleepOwedSince < lidDelay)
        return;
    const auto lid = machine.lid();
    if (lid && lid->isShut && lid->causesSleep) {
        const auto sleepDisabled = sleepDisabledNow(machine);
        if (!sleepDisabled)
            return;
        if (!*sleepDisabled) {
            services_.log("asking the Mac to sleep: its lid is shut");
            if (!machine.requestSleep())
                return;
        }
    }
    state_.sleepOwedSince.reset();
}

void Guard::recover() {
    const auto left = services_.records.read();
    if (left) {
        services_.log("a hold was left behind; sleep back");
        revert(RevertReason::recovered);
    }
    recallLastEnd(left);
}

/// Tells the ledger how the last hold of an earlier run ended. A hold that left its record behind,
/// and no later end, was cut short by a crash of that run.
void Guard::recallLastEnd(const std::optional<PowerDaemonRecord>& left) {
    savedEnd_ = services_.records.readLastEnd();
    if (savedEnd_)
        ledger_.endedEarlier(*savedEnd_);
    if (!left || (savedEnd_ && savedEnd_->at >= left->since))
        return;
    ledger_.endedEarlier({.how = std::string(rawText(HoldEnding::crashed)),
                          .at = services_.machine.wallTime().sinceEpoch});
    saveLastEndLater();
}

Guard::HoldResult Guard::hold(ClientId who, BatteryFloor floor) {
    if (isStopping_)
        return std::unexpected(HoldRefusal::gone);
    if (state_.holder && state_.holder != who)
        return std::unexpected(HoldRefusal::busy);

    const PowerGuardPolicy::Facts facts = readFacts(floor);
    if (const auto danger = PowerGuardPolicy::danger(facts)) {
        revert(PowerGuardPolicy::revertReason(*danger));
        return std::unexpected(PowerGuardPolicy::holdRefusal(*danger));
    }

    // A setting that is still to be restored decides whether pmset is run, and not a holder.
    if (!state_.heldPrevious)
        state_.heldPrevious = recordedPrevious();
    HoldResult begun;
    if (!state_.heldPrevious)
        begun = beginHold();
    else if (!state_.holder)
        begun = takeOverRestore();
    if (!begun)
        return begun;

    state_.holder = who;
    state_.floor = floor;
    state_.lastBeat = facts.now;
    state_.sleepOwedSince.reset();
    ledger_.began(who, services_.machine.wallTime());
    return {};
}

Guard::HoldResult Guard::beginHold() {
    const auto previous = sleepDisabledNow(services_.machine);
    if (!previous)
        return std::unexpected(HoldRefusal::unreadable);
    const WallTime since = services_.machine.wallTime();
    if (!services_.records.write({.previous = *previous, .since = since.sinceEpoch}))
        return std::unexpected(HoldRefusal::record);
    state_.heldPrevious = previous;

    if (!*previous && !disableSleep()) {
        undoDisableSleep();
        return std::unexpected(HoldRefusal::pmset);
    }
    logDisabledSleep();
    return {};
}

/// Keeps sleep disabled although a restore is still to be done. A restore that failed may have
/// enabled sleep all the same; only the property is read for that, as pmset may hang.
Guard::HoldResult Guard::takeOverRestore() {
    if (*state_.heldPrevious || services_.machine.sleepDisabledProperty() != false)
        return {};
    if (!disableSleep())
        return std::unexpected(HoldRefusal::pmset);
    logDisabledSleep();
    return {};
}

void Guard::logDisabledSleep() const {
    services_.log("sleep disabled (closed lid) for a Velmo client");
}

bool Guard::heartbeat(ClientId who) {
    if (state_.holder != who)
        return false;
    state_.lastBeat = services_.machine.steadyTime();
    return true;
}

bool Guard::release(std::optional<ClientId> who) {
    const bool isHolder = who && state_.holder == who;
    ledger_.ended(isHolder ? HoldEnding::released : HoldEnding::releasedByAnother,
                  services_.machine.wallTime());
    return revert(RevertReason::released);
}

HoldReport Guard::report(ClientId who) {
    HoldReport report{.holder = ledger_.holder(),
                      .pending = !state_.holder && previousToRestore() == false,
                      // Not by pmset, which may hang: a client that only asks must not keep the
                      // guard from its work.
                      .sleepDisabled = services_.machine.sleepDisabledProperty(),
                      .recordIsUnreadable = services_.records.isUnreadable(),
                      .ownEnd = ledger_.lastEndOf(who),
                      .lastEnd = ledger_.lastEnd()};
    if (report.holder) {
        report.holder->batteryFloor = state_.floor.percent();
        report.holder->heartbeatAge = services_.machine.steadyTime() - state_.lastBeat;
        report.holder->isCaller = state_.holder == who;
    }
    return report;
}

bool Guard::revert(RevertReason reason) {
    state_.holder.reset();
    state_.enablingIsLogged = false;
    state_.idleSince = services_.machine.steadyTime();
    if (const auto ending = endingOf(reason))
        ledger_.ended(*ending, services_.machine.wallTime());
    const bool restored = restore(reason);
    saveLastEndLater();
    return restored;
}

bool Guard::restore(RevertReason reason) {
    const auto previous = previousToRestore();
    if (!previous)
        return true;
    if (!*previous) {
        if (!enableSleep()) {
            services_.log("could not re-enable sleep (" + std::string(rawText(reason))
                          + "); retrying");
            return false;
        }
        if (reason != RevertReason::stopping)
            state_.sleepOwedSince = services_.machine.steadyTime();
    }
    state_.heldPrevious.reset();
    services_.records.remove();
    services_.log("sleep enabled again (" + std::string(rawText(reason)) + ")");
    return true;
}

// pmset reports success even if the setting did not change, so the setting is read back.

bool Guard::disableSleep() {
    return writeSetting(true) && becomes(true);
}

bool Guard::enableSleep() {
    return writeSetting(false) && becomes(false);
}

/// Returns whether pmset ran and reported success.
bool Guard::writeSetting(bool sleepDisabled) {
    return services_.machine.runPmset({"-a", "disablesleep", sleepDisabled ? "1" : "0"})
        .has_value();
}

/// Enables sleep again after a hold that could not begin. If that fails too, the record stays and
/// the tick tries again.
void Guard::undoDisableSleep() {
    PowerMachine& machine = services_.machine;
    const bool isUndone = writeSetting(false);
    if (isUndone && machine.sleepDisabledProperty())
        becomes(false);
    if (machine.sleepDisabledProperty() == true)
        return;
    // The property may still be late; the preference, which pmset writes itself, never is.
    if (!isUndone && sleepDisabledPreference(machine) == true)
        return;
    services_.records.remove();
    state_.heldPrevious.reset();
}

/// Returns whether the setting has this value now or takes it soon. pmset only writes preferences
/// and posts a notification, upon which another process sets the property; "pmset -g" reads the
/// preferences.
bool Guard::becomes(bool sleepDisabled) {
    PowerMachine& machine = services_.machine;
    const SteadyTime start = machine.steadyTime();
    while (true) {
        const auto property = machine.sleepDisabledProperty();
        const auto value = property ? property : sleepDisabledPreference(machine);
        if (value == sleepDisabled)
            return true;
        if (machine.steadyTime() - start >= maxLateness)
            return false;
        machine.pause(property ? latenessStep : preferenceStep);
    }
}

/// Posted to the queue, so that the caller's reply does not wait for the disk. Skipped while a hold
/// is in force or a restore is pending, because a drive that hangs must not delay a restore.
void Guard::saveLastEndLater() {
    queue().async([guard = shared_from_this()] {
        if (!guard->state_.holder && !guard->previousToRestore())
            guard->saveLastEnd();
    });
}

void Guard::saveLastEnd() {
    if (ledger_.lastEnd() == savedEnd_)
        return;
    savedEnd_ = ledger_.lastEnd();
    services_.records.writeLastEnd(*savedEnd_);
}

/// Returns the setting to restore; absent if there is nothing to do. What the guard remembers
/// counts more than the record, which another program may have damaged meanwhile.
std::optional<bool> Guard::previousToRestore() {
    return state_.heldPrevious ? state_.heldPrevious : recordedPrevious();
}

std::optional<bool> Guard::recordedPrevious() {
    return services_.records.read().transform(
        [](const PowerDaemonRecord& record) { return record.previous; });
}

} // namespace velmo
