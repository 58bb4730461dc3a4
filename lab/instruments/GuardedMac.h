#pragma once

#include "daemon/ClientConnection.h"
#include "daemon/Guard.h"
#include "lab/instruments/StepQueue.h"

#include <deque>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A little Mac in memory. What the guard does to the Mac and what it logs goes into `events`, in
/// order.
namespace velmo {

using Events = std::vector<std::string>;

class FakeMachine : public PowerMachine {
public:
    /// What a kind of pmset call does.
    enum class Pmset { works, fails, lies, worksAndFails };

    explicit FakeMachine(Events& events) : events_(&events) {}

    std::optional<std::string> runPmset(PmsetArguments arguments) override {
        std::string call = "pmset";
        for (const std::string_view word : arguments)
            call.append(" ").append(word);
        events_->push_back(call);
        const bool on = call == "pmset -a disablesleep 1";
        if (call == "pmset -g" && readings-- <= 0)
            return std::nullopt;
        const Pmset behaviour = call == "pmset -g" ? pmsetRead : on ? pmsetOn : pmsetOff;
        if (behaviour == Pmset::fails)
            return std::nullopt;
        if (call == "pmset -g")
            return " SleepDisabled\t\t" + std::string(late.value_or(sleepDisabled) ? "1" : "0")
                   + "\n";
        if (behaviour != Pmset::lies)
            set(on);
        return behaviour == Pmset::worksAndFails ? std::nullopt : std::optional<std::string>("");
    }

    std::optional<bool> sleepDisabledProperty() override {
        if (late && clock >= due)
            sleepDisabled = *std::exchange(late, {});
        if (!propertyReadable || blindReadings-- > 0)
            return std::nullopt;
        return sleepDisabled;
    }

    std::optional<PowerSourceSnapshot> powerSources() override {
        clock += snapshotTakes;
        PowerSourceSnapshot snapshot{.providingType = mains ? "AC Power" : "Battery Power",
                                     .sources = {}};
        snapshot.sources.push_back(
            {.type = "InternalBattery", .currentCapacity = battery, .maximumCapacity = 100});
        return snapshot;
    }

    ThermalState thermalState() override { return thermal; }

    std::optional<LidState> lid() override { return lidState; }

    bool requestSleep() override {
        events_->emplace_back("sleep!");
        return takesRequests;
    }

    WallTime wallTime() override { return {date}; }

    SteadyTime steadyTime() override { return {clock}; }

    void pause(double seconds) override { clock += seconds; }

    /// Makes all kinds of pmset calls behave alike.
    void breakPmset(Pmset behaviour) { pmsetOn = pmsetOff = pmsetRead = behaviour; }

    bool sleepDisabled = false;
    bool propertyReadable = true;
    int blindReadings = 0;    ///< how often the property is absent before it can be read
    double snapshotTakes = 0; ///< seconds that a read of the power sources takes, sleep included
    Pmset pmsetOn = Pmset::works;   ///< disables sleep
    Pmset pmsetOff = Pmset::works;  ///< enables it
    Pmset pmsetRead = Pmset::works; ///< prints the setting
    int readings = 1000;            ///< how often pmset prints the setting before it fails
    double lateness = 0;            ///< seconds until the property follows what pmset has set
    std::optional<LidState> lidState;
    bool takesRequests = true; ///< to sleep
    bool mains = true;
    std::int64_t battery = 80;
    ThermalState thermal = ThermalState::nominal;
    double date = 1'700'000'000; ///< seconds since 1970
    double clock = 1000;         ///< of the steady clock

private:
    void set(bool disabled) {
        if (lateness == 0) {
            sleepDisabled = disabled;
            late.reset();
            return;
        }
        late = disabled;
        due = clock + lateness;
    }

    Events* events_;
    std::optional<bool> late; ///< what pmset has set and the property does not say yet
    double due = 0;           ///< when the property will say it
};

class FakeRecords final : public RecordStore {
public:
    explicit FakeRecords(Events& events) : events_(events) {}

    std::optional<PowerDaemonRecord> read() override { return damaged ? std::nullopt : record; }

    bool write(const PowerDaemonRecord& written) override {
        events_.emplace_back(written.previous ? "record: disabled" : "record: enabled");
        if (writable)
            record = written;
        return writable;
    }

    void remove() override {
        events_.emplace_back("record removed");
        if (removable)
            record.reset();
    }

    bool isUnreadable() override { return record && damaged; }

    std::optional<HoldEnd> readLastEnd() override { return lastEnd; }

    void writeLastEnd(const HoldEnd& end) override {
        wroteEndOverRecord = record.has_value();
        lastEnd = end;
    }

    std::optional<PowerDaemonRecord> record;
    bool writable = true;
    bool removable = true;
    bool damaged = false; ///< a record that exists can't be decoded
    std::optional<HoldEnd> lastEnd;
    bool wroteEndOverRecord = false; ///< the last end was written while a record existed

private:
    Events& events_;
};

class FakeConnection final : public ClientConnection {
public:
    FakeConnection(std::uint64_t id, Events& events) : id_{id}, events_(events) {}

    [[nodiscard]] ClientId id() const override { return id_; }

    [[nodiscard]] std::optional<std::int64_t> processId() const override { return 4711; }

    [[nodiscard]] std::optional<std::string> programName() const override { return program; }

    bool requireCodeSignature(const std::string& text) override {
        events_.push_back("requirement " + text);
        return requirementWellFormed;
    }

    void exportSession(std::shared_ptr<VelmoPowerProtocol> exported) override {
        events_.emplace_back("session");
        session = std::move(exported);
    }

    void onInvalidation(std::function<void()> handler) override {
        events_.emplace_back("invalidation handler");
        invalidate = std::move(handler);
    }

    void resume() override {
        events_.emplace_back("resume");
        if (lostAtOnce)
            invalidate();
    }

    bool requirementWellFormed = true;
    bool lostAtOnce = false;
    std::optional<std::string> program = "velmo-power";
    std::shared_ptr<VelmoPowerProtocol> session;
    std::function<void()> invalidate;

private:
    ClientId id_;
    Events& events_;
};

/// A guard on the little Mac, with a queue of the given type.
template<class Queue>
struct GuardedMacOn {
    Events events;
    FakeMachine machine{events};
    FakeRecords records{events};
    Queue queue;
    std::vector<int> exits;
    std::shared_ptr<Guard> guard = newGuard("requirement");

    std::shared_ptr<Guard> newGuard(std::optional<std::string> requirement) {
        return std::make_shared<Guard>(
            Guard::Services{
                .machine = machine,
                .records = records,
                .queue = queue,
                .log = [this](std::string_view message) { events.emplace_back(message); },
                .exitProcess = [this](int status) { exits.push_back(status); }},
            std::move(requirement));
    }

    void tick() {
        guard->tick();
        queue.runAll();
    }

    void tickAfter(double seconds) {
        machine.clock += seconds;
        tick();
    }

    /// Returns the events since the last call.
    Events takeEvents() { return std::exchange(events, {}); }
};

using GuardedMac = GuardedMacOn<StepQueue>;

} // namespace velmo
