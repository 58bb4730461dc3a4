#pragma once

#include "daemon/Startup.h"

#include "lab/guard-walk/Choices.h"
#include "lab/instruments/StepQueue.h"

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

enum class Happening : std::uint8_t {
    start,       ///< launchd starts the daemon
    crash,       ///< it is killed between two pieces of work
    terminate,   ///< SIGTERM
    tick,        ///< the timer fires
    onThreshold, ///< the time since the last beat, or since the guard became free, is at its limit
    pastThreshold,
    clockSetBack,
    // Of one client, `Event::client`:
    connect,
    loseConnection,
    letGo,    ///< the last call in flight on a lost connection has ended
    holdLow,  ///< floor 10
    holdHigh, ///< floor 50
    heartbeat,
    release,
};

struct Event {
    Happening happening;
    std::uint8_t client = 0;

    [[nodiscard]] std::string name() const;
};

/// A Mac on which the real daemon runs, from `runDaemon` down to the sessions, and on which
/// whatever can go wrong does, as the choices say: each tool, sensor and file works or fails for
/// the length of an event, and the daemon may be killed right before and right after everything
/// that it does to the Mac. Says in `violation` what must never be.
class ExploredMac final : public DaemonHost, private PowerMachine, private RecordStore {
public:
    /// What is broken about the Mac beyond what a daemon can stand, to see that it is noticed.
    enum class Flaw : std::uint8_t { none, recordIsNotKept, propertyAlwaysEnabled };

    ExploredMac(bool sleepDisabled, Flaw flaw);
    ~ExploredMac() override;
    ExploredMac(const ExploredMac&) = delete;
    ExploredMac& operator=(const ExploredMac&) = delete;

    [[nodiscard]] bool possible(Event event) const;
    void run(Event event, Choices& choices);

    /// Nothing is wrong any longer, everybody goes, and the daemon runs until it ends.
    void settle();

    /// Everything that what happens next can depend on.
    [[nodiscard]] std::uint64_t key() const;

    [[nodiscard]] const std::string& violation() const { return violation_; }

private:
    struct Killed {};

    struct Ended {};

    /// The state of the surroundings, found out when first asked for and then kept for the event.
    struct Surroundings {
        std::optional<std::size_t> tool, supply, heat, property, reading, writing, removing;
    };

    struct Process {
        StepQueue queue;
        std::shared_ptr<Guard> guard;
        std::function<void()> tick;
        std::function<void()> terminate;
    };

    class Connection;

    // DaemonHost
    RecordStore& recordStore(std::string_view, std::string_view) override { return *this; }

    bool startedByRoot() override { return true; }

    std::optional<std::string> currentSigningTeam() override { return "TEAM"; }

    PowerMachine& machine() override { return *this; }

    SerialQueue& guardQueue() override { return process_->queue; }

    void writeLog(std::string_view) override {}

    void listen(std::string_view, std::shared_ptr<Guard> guard) override;
    void repeat(double, std::function<void()> handler) override;
    void onTermination(std::function<void()> handler) override;

    [[noreturn]] void exitProcess(int) override { throw Ended{}; }

    void park() override {}

    // PowerMachine
    std::optional<std::string> runPmset(PmsetArguments arguments) override;
    std::optional<bool> sleepDisabledProperty() override;
    std::optional<PowerSourceSnapshot> powerSources() override;
    ThermalState thermalState() override;

    WallTime wallTime() override { return {clock_}; }

    SteadyTime steadyTime() override { return {clock_}; }

    // RecordStore
    std::optional<PowerDaemonRecord> read() override;
    bool write(const PowerDaemonRecord& record) override;
    void remove() override;

    void happen(Event event);
    void call(Event event);
    [[nodiscard]] double age() const;
    [[nodiscard]] double threshold() const;
    [[nodiscard]] std::uint64_t holderKey() const;
    [[nodiscard]] std::uint64_t ageKey() const;
    std::size_t ask(std::optional<std::size_t>& kept,
                    std::initializer_list<std::string_view> options);
    void affect(std::initializer_list<std::string_view> options,
                const std::function<void()>& effect);
    void checkMoment();
    void checkRest();
    void violate(std::string_view what);

    const bool before_; ///< the setting before anybody held
    const Flaw flaw_;
    bool sleepDisabled_;
    std::optional<PowerDaemonRecord> record_;
    double clock_ = 1000;
    std::unique_ptr<Process> process_;
    std::array<std::shared_ptr<Connection>, 2> clients_;
    std::uint64_t connectionsMade_ = 0;

    Choices* choices_ = nullptr; ///< none: nothing goes wrong
    Surroundings surroundings_;
    std::string violation_;
};

} // namespace velmo
