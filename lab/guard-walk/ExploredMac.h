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

namespace velmo {

enum class Happening : std::uint8_t {
    start,       ///< launchd starts the daemon
    crash,       ///< the daemon is killed between two pieces of work
    terminate,   ///< SIGTERM
    tick,        ///< the timer fires
    onThreshold, ///< the time since the last beat, or since the guard became free, is at its limit
    pastThreshold,
    atLidDelay,    ///< half a minute has passed since sleep was enabled again
    settingLands,  ///< what pmset has set late takes effect
    recordIsLost,  ///< the record is removed by hand
    recordRots,    ///< the record can't be decoded any more
    faultsAreGone, ///< what was broken for good is mended
    shutLid,
    openLid,
    enableByHand, ///< sleep is enabled by hand although a client holds
    // What happens to one client, `Event::client`:
    connect,
    loseConnection,
    letGo,    ///< the last call in flight on a lost connection has ended
    holdLow,  ///< floor 10
    holdHigh, ///< floor 50
    heartbeat,
    release,
    report,
    terminateWithHoldBehind, ///< SIGTERM, and a hold that is posted while the signal is handled
};

struct Event {
    Happening happening;
    std::uint8_t client = 0;

    [[nodiscard]] std::string name() const;
};

/// A Mac on which the real daemon runs, from `runDaemon` down to the sessions. The choices say what
/// goes wrong. Every tool, sensor and file works or fails for the length of an event, and one of
/// them may fail from then on until it is mended. A setting lands late or never. The daemon may be
/// killed right before and right after everything that it does to the Mac. `violation` says which
/// rule was broken.
class ExploredMac final : public DaemonHost, private PowerMachine, private RecordStore {
public:
    /// A flaw that no daemon can cope with, planted to see that the walk notices it.
    enum class Flaw : std::uint8_t { none, recordIsNotKept, propertyAlwaysEnabled };

    /// What a walk looks at. Both aspects at once would make too many states.
    enum class Aspect : std::uint8_t {
        faults, ///< what breaks for good, settings that land late, records that are lost
        lid,
    };

    /// How a Mac can get into a state that no program could mend, because nothing is left to say
    /// that sleep is disabled on the daemon's behalf.
    enum class Loss : std::uint8_t {
        none,
        record,        ///< the record was lost or rotted, and then the daemon ended
        blindUndo,     ///< a hold was refused; nothing could read the setting or undo it
        lateAfterUndo, ///< a hold was refused and not undone, and then its setting landed
    };

    ExploredMac(bool sleepDisabled, Aspect aspect, Flaw flaw);
    ~ExploredMac() override;
    ExploredMac(const ExploredMac&) = delete;
    ExploredMac& operator=(const ExploredMac&) = delete;

    [[nodiscard]] bool possible(Event event) const;

    void run(Event event, Choices& choices);

    /// Called with a Mac on which the daemon was killed, and with the choices that lead there.
    using OnKill = std::function<void(const ExploredMac& mac, Choices::Script script)>;

    /// Runs the event, and shows `onKill` the Mac at every point where the daemon might be killed,
    /// then goes on. A kill leaves nothing but the Mac, so that it needs no run of its own.
    void run(Event event, Choices& choices, const OnKill& onKill);

    /// Mends everything, ends every connection, and runs the daemon until it ends.
    void settle();

    /// Returns a number for the state: everything that later events can depend on.
    [[nodiscard]] std::uint64_t key() const;

    [[nodiscard]] const std::string& violation() const { return violation_; }

    /// Returns how the Mac was lost, if it was. A lost Mac is not checked any further.
    [[nodiscard]] Loss loss() const { return loss_; }

private:
    struct Killed {};

    struct Ended {};

    /// What may work or fail.
    enum class Part : std::uint8_t {
        pmsetOn,
        pmsetOff,
        pmsetRead,
        property,
        reading,
        writing,
        removing,
        request, // to sleep
        supply,
        heat,
    };
    static constexpr std::size_t parts = 10;

    struct Process {
        StepQueue queue;
        std::shared_ptr<Guard> guard;
        std::function<void()> tick;
        std::function<void()> terminate;
        bool isEnding = false;
    };

    class Connection;

    // DaemonHost
    RecordStore& recordStore(std::string_view, std::string_view) override { return *this; }

    bool startedByRoot() override { return true; }

    std::optional<std::string> currentSigningTeam() override { return "TEAM"; }

    PowerMachine& machine() override { return *this; }

    SerialQueue& guardQueue() override { return process_->queue; }

    void writeLog(std::string_view line) override;
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
    std::optional<LidState> lid() override;
    bool requestSleep() override;

    WallTime wallTime() override { return {clock_}; }

    SteadyTime steadyTime() override { return {clock_ + paused_}; }

    void pause(double seconds) override;

    // RecordStore
    std::optional<PowerDaemonRecord> read() override;
    bool write(const PowerDaemonRecord& record) override;
    void remove() override;
    bool isUnreadable() override;

    std::optional<HoldEnd> readLastEnd() override { return std::nullopt; }

    void writeLastEnd(const HoldEnd&) override;

    void happen(Event event);
    void call(Event event);
    void askAndCompare(const Connection& client, int& replies);
    void holdAndWatch(VelmoPowerProtocol& session, std::int64_t floor, int& replies);
    std::size_t ask(Part part, std::initializer_list<std::string_view> options);
    void affect(std::initializer_list<std::string_view> options,
                const std::function<void()>& effect);
    void showKilled(std::size_t question, std::uint8_t when);
    void bury();
    void set(bool sleepDisabled, bool late);
    void land();

    [[nodiscard]] const Guard::State& state() const { return process_->guard->state(); }

    [[nodiscard]] double age() const;
    [[nodiscard]] double threshold() const;
    [[nodiscard]] bool isRemembered() const;
    [[nodiscard]] bool isForgotten() const;
    [[nodiscard]] bool isDisturbed() const;
    [[nodiscard]] std::uint64_t clientKey(const std::shared_ptr<Connection>& client) const;
    [[nodiscard]] std::uint64_t ageKey() const;
    [[nodiscard]] std::uint64_t owedKey() const;
    void checkMoment();
    void checkRest();
    void checkEnd();
    void checkTelling(Event event);
    void violate(std::string_view what);

    const bool before_; ///< the setting before the first hold
    const Aspect aspect_;
    const Flaw flaw_;
    bool sleepDisabled_;
    std::optional<bool> late_; ///< what pmset has set and what has yet to take effect
    std::optional<PowerDaemonRecord> record_;
    bool rotten_ = false;        ///< the record can't be decoded
    bool recordWasLost_ = false; ///< since it was written
    bool lidIsShut_ = false;
    bool trapped_ = false;  ///< sleep is enabled again, but the Mac has yet to look at its lid
    bool isTold_ = false;   ///< the log says that sleep is enabled although this client holds
    bool isAsking_ = false; ///< a report is being made
    double clock_ = 1000;
    double paused_ = 0; ///< seconds that the guard has paused in this event
    std::unique_ptr<Process> process_;
    std::array<std::shared_ptr<Connection>, 2> clients_;
    std::uint64_t connectionsMade_ = 0;
    Loss loss_ = Loss::none;

    Choices* choices_ = nullptr; ///< none: nothing goes wrong
    const OnKill* onKill_ = nullptr;
    /// How each part behaves: chosen when first asked for, then kept for the event.
    std::array<std::optional<std::size_t>, parts> surroundings_;

    struct Lasting {
        Part part;
        std::size_t behaviour;
    };

    std::optional<Lasting> lasting_; ///< what is broken until it is mended
    std::string violation_;
};

} // namespace velmo
