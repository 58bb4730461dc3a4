#pragma once

#include "daemon/ClientConnection.h"
#include "daemon/Guard.h"
#include "daemon/Session.h"

#include "lab/instruments/StepQueue.h"

#include <deque>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A little Mac in memory. What it is made to do, and what is said of it, goes in order into
/// `events`.
namespace velmo {

using Events = std::vector<std::string>;

class FakeMachine : public PowerMachine {
public:
    enum class Pmset { works, fails, lies };

    explicit FakeMachine(Events& events) : events_(&events) {}

    std::optional<std::string> runPmset(PmsetArguments arguments) override {
        std::string call = "pmset";
        for (const std::string_view word : arguments)
            call.append(" ").append(word);
        events_->push_back(call);
        if (pmset == Pmset::fails)
            return std::nullopt;
        if (call == "pmset -g")
            return " SleepDisabled\t\t" + std::string(sleepDisabled ? "1" : "0") + "\n";
        if (pmset == Pmset::works)
            sleepDisabled = call == "pmset -a disablesleep 1";
        return "";
    }

    std::optional<bool> sleepDisabledProperty() override {
        return propertyReadable ? std::optional(sleepDisabled) : std::nullopt;
    }

    std::optional<PowerSourceSnapshot> powerSources() override {
        PowerSourceSnapshot snapshot{.providingType = mains ? "AC Power" : "Battery Power",
                                     .sources = {}};
        snapshot.sources.push_back(
            {.type = "InternalBattery", .currentCapacity = battery, .maximumCapacity = 100});
        return snapshot;
    }

    ThermalState thermalState() override { return thermal; }

    WallTime wallTime() override { return {date}; }

    SteadyTime steadyTime() override { return {clock}; }

    bool sleepDisabled = false;
    bool propertyReadable = true;
    Pmset pmset = Pmset::works;
    bool mains = true;
    std::int64_t battery = 80;
    ThermalState thermal = ThermalState::nominal;
    double date = 1'700'000'000; ///< seconds since 1970
    double clock = 1000;         ///< of the steady clock

private:
    Events* events_;
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

    std::optional<PowerDaemonRecord> record;
    bool writable = true;
    bool removable = true;
    bool damaged = false; ///< there is one, but it can't be decoded

private:
    Events& events_;
};

class FakeConnection final : public ClientConnection {
public:
    FakeConnection(std::uint64_t id, Events& events) : id_{id}, events_(events) {}

    [[nodiscard]] ClientId id() const override { return id_; }

    bool requireCodeSignature(const std::string& text) override {
        events_.push_back("requirement " + text);
        return requirementWellFormed;
    }

    void exportSession(std::shared_ptr<Session> exported) override {
        events_.emplace_back("session");
        session = std::move(exported);
    }

    void onInvalidation(std::function<void()> handler) override {
        events_.emplace_back("invalidation handler");
        invalidate = std::move(handler);
    }

    void resume() override { events_.emplace_back("resume"); }

    bool requirementWellFormed = true;
    std::shared_ptr<Session> session;
    std::function<void()> invalidate;

private:
    ClientId id_;
    Events& events_;
};

/// A guard on the little Mac.
struct GuardedMac {
    Events events;
    FakeMachine machine{events};
    FakeRecords records{events};
    StepQueue queue;
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

    /// What happened since the last time it was asked.
    Events takeEvents() { return std::exchange(events, {}); }
};

} // namespace velmo
