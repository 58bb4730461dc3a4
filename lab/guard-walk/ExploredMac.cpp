#include "lab/guard-walk/ExploredMac.h"

#include "core/power/PowerGuardPolicy.h"
#include "daemon/Session.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

constexpr double past = 0.5;    ///< seconds beyond a threshold
constexpr double back = 3600.0; ///< seconds that the clock is set back by

constexpr std::int64_t lowFloor = 10;
constexpr std::int64_t highFloor = 50;

constexpr std::array<std::string_view, 14> names{
    "start",     "crash",   "SIGTERM", "tick",   "on the threshold", "past the threshold",
    "set back",  "connect", "lose",    "let go", "hold floor 10",    "hold floor 50",
    "heartbeat", "release",
};

} // namespace

std::string Event::name() const {
    std::string name(names.at(std::to_underlying(happening)));
    if (happening >= Happening::connect)
        name += client == 0 ? " of A" : " of B";
    return name;
}

class ExploredMac::Connection final : public ClientConnection {
public:
    explicit Connection(std::uint64_t id) : id_{id} {}

    [[nodiscard]] ClientId id() const override { return id_; }

    bool requireCodeSignature(const std::string&) override { return true; }

    void exportSession(std::shared_ptr<Session> exported) override {
        session = std::move(exported);
    }

    void onInvalidation(std::function<void()> handler) override { invalidate = std::move(handler); }

    void resume() override {}

    std::shared_ptr<Session> session;
    std::function<void()> invalidate;
    bool lost = false;

private:
    ClientId id_;
};

ExploredMac::ExploredMac(bool sleepDisabled, Flaw flaw)
    : before_(sleepDisabled), flaw_(flaw), sleepDisabled_(sleepDisabled) {
}

ExploredMac::~ExploredMac() = default;

bool ExploredMac::possible(Event event) const {
    using enum Happening;
    if (event.happening == start)
        return !process_;
    if (!process_)
        return false;
    const auto& client = clients_.at(event.client);
    switch (event.happening) {
    case onThreshold:
        return age() < threshold();
    case pastThreshold:
        return age() <= threshold();
    case clockSetBack:
        return age() >= 0;
    case connect:
        return !client;
    case loseConnection:
        return client && !client->lost;
    case letGo:
        return client && client->lost;
    case holdLow:
    case holdHigh:
    case heartbeat:
    case release:
        return client != nullptr;
    default:
        return true;
    }
}

void ExploredMac::run(Event event, Choices& choices) {
    choices_ = &choices;
    surroundings_ = {};
    try {
        happen(event);
    } catch (const Killed&) {
        process_.reset();
    } catch (const Ended&) {
        process_.reset();
    }
    if (!process_)
        clients_ = {};
    checkRest();
    choices_ = nullptr;
}

void ExploredMac::happen(Event event) {
    auto& client = clients_.at(event.client);
    switch (event.happening) {
    case Happening::start:
        process_ = std::make_unique<Process>();
        runDaemon(*this);
        break;
    case Happening::crash:
        throw Killed{};
    case Happening::terminate:
        process_->terminate();
        break;
    case Happening::tick:
        process_->tick();
        break;
    case Happening::onThreshold:
        clock_ += threshold() - age();
        break;
    case Happening::pastThreshold:
        clock_ += threshold() - age() + past;
        break;
    case Happening::clockSetBack:
        clock_ -= back;
        break;
    case Happening::connect:
        client = std::make_shared<Connection>(++connectionsMade_);
        if (!process_->guard->acceptConnection(client))
            violate("a signed client was refused");
        break;
    case Happening::loseConnection:
        client->lost = true;
        client->invalidate();
        break;
    case Happening::letGo:
        client.reset();
        break;
    default:
        call(event);
        return;
    }
    process_->queue.runAll();
}

void ExploredMac::call(Event event) {
    int replies = 0;
    const auto& client = clients_.at(event.client);
    const auto session = client->session;
    const auto holderBefore = process_->guard->state().holder;
    const auto held = [&](bool ok, std::string_view reason) {
        ++replies;
        if (ok != reason.empty())
            violate("a hold was answered with the wrong kind of reason");
        if (ok && holderBefore && holderBefore != client->id())
            violate("a second client was told that it holds");
    };
    switch (event.happening) {
    case Happening::holdLow:
        session->hold(lowFloor, held);
        break;
    case Happening::holdHigh:
        session->hold(highFloor, held);
        break;
    case Happening::heartbeat:
        session->heartbeat([&](bool ok) {
            ++replies;
            if (ok && holderBefore != client->id())
                violate("a client was told that it holds, and does not");
        });
        break;
    default:
        session->release([&](bool) { ++replies; });
    }
    process_->queue.runAll();
    if (replies != 1)
        violate("a call was answered " + std::to_string(replies) + " times");
}

void ExploredMac::settle() {
    Choices nothingWrong;
    const auto runIfPossible = [&](Event event) {
        if (possible(event))
            run(event, nothingWrong);
        nothingWrong = {};
    };
    runIfPossible({.happening = Happening::start});
    for (std::uint8_t client = 0; client < clients_.size(); ++client) {
        runIfPossible({.happening = Happening::loseConnection, .client = client});
        runIfPossible({.happening = Happening::letGo, .client = client});
    }
    runIfPossible({.happening = Happening::tick}); // a hold that came in on a lost connection
    for (const Happening happening :
         {Happening::pastThreshold, Happening::tick, Happening::pastThreshold, Happening::tick})
        runIfPossible({.happening = happening});
    if (process_)
        violate("the daemon does not end although nobody needs it");
    if (sleepDisabled_ != before_)
        violate("the setting was not put back");
    if (record_)
        violate("a record is left behind");
}

void ExploredMac::listen(std::string_view, std::shared_ptr<Guard> guard) {
    process_->guard = std::move(guard);
}

void ExploredMac::repeat(double, std::function<void()> handler) {
    process_->tick = std::move(handler);
}

void ExploredMac::onTermination(std::function<void()> handler) {
    process_->terminate = std::move(handler);
}

std::size_t ExploredMac::ask(std::optional<std::size_t>& kept,
                             std::initializer_list<std::string_view> options) {
    if (!kept)
        kept = choices_->choose(options);
    return *kept;
}

/// Does something to the Mac; the second option is to be killed just before, the third just after.
void ExploredMac::affect(std::initializer_list<std::string_view> options,
                         const std::function<void()>& effect) {
    const std::size_t killed = choices_->choose(options);
    if (killed == 1)
        throw Killed{};
    effect();
    checkMoment();
    if (killed == 2)
        throw Killed{};
}

std::optional<std::string> ExploredMac::runPmset(PmsetArguments arguments) {
    // A tool that could not be launched looks the same as one that failed.
    enum { works, fails, lies, worksAndFails };

    const std::size_t tool = ask(
        surroundings_.tool, {"", "pmset fails", "pmset lies", "pmset works and says it failed"});
    const bool failed = tool == fails || tool == worksAndFails;
    if (arguments.size() == 1) {
        if (failed)
            return std::nullopt;
        return std::string("SleepDisabled ") + (sleepDisabled_ ? "1" : "0");
    }
    affect({"", "killed before pmset", "killed after pmset"}, [&] {
        if (tool == works || tool == worksAndFails)
            sleepDisabled_ = arguments.end()[-1] == "1";
    });
    return failed ? std::nullopt : std::optional<std::string>("");
}

std::optional<bool> ExploredMac::sleepDisabledProperty() {
    if (ask(surroundings_.property, {"", "property unreadable"}) == 1)
        return std::nullopt;
    return flaw_ == Flaw::propertyAlwaysEnabled ? false : sleepDisabled_;
}

std::optional<PowerSourceSnapshot> ExploredMac::powerSources() {
    const std::size_t supply =
        ask(surroundings_.supply, {"", "on battery at 30 %", "on battery at 5 %"});
    PowerSourceSnapshot snapshot{.providingType = supply == 0 ? "AC Power" : "Battery Power",
                                 .sources = {}};
    snapshot.sources.push_back({.type = "InternalBattery",
                                .currentCapacity = supply == 2 ? 5 : 30,
                                .maximumCapacity = 100});
    return snapshot;
}

ThermalState ExploredMac::thermalState() {
    return ask(surroundings_.heat, {"", "hot"}) == 1 ? ThermalState::serious
                                                     : ThermalState::nominal;
}

std::optional<PowerDaemonRecord> ExploredMac::read() {
    if (!record_ || ask(surroundings_.reading, {"", "record unreadable"}) == 1)
        return std::nullopt;
    return record_;
}

bool ExploredMac::write(const PowerDaemonRecord& record) {
    // One that can't be read is not written over either.
    if (record_ && !read())
        return false;
    if (ask(surroundings_.writing, {"", "record unwritable"}) == 1)
        return false;
    affect({"", "killed before writing", "killed after writing"}, [&] {
        if (flaw_ != Flaw::recordIsNotKept)
            record_ = record;
    });
    return true;
}

void ExploredMac::remove() {
    if (ask(surroundings_.removing, {"", "record stays"}) == 0)
        affect({"", "killed before removing", "killed after removing"}, [&] { record_.reset(); });
}

double ExploredMac::age() const {
    const Guard::State& state = process_->guard->state();
    return SteadyTime{clock_} - (state.holder ? state.lastBeat : state.idleSince);
}

double ExploredMac::threshold() const {
    return process_->guard->state().holder ? PowerGuardPolicy::heartbeatTimeout
                                           : PowerGuardPolicy::idleExit;
}

void ExploredMac::checkMoment() {
    if (sleepDisabled_ && !before_ && !record_)
        violate("sleep is disabled and no record says so");
}

void ExploredMac::checkRest() {
    checkMoment();
    if (!process_)
        return;
    const Guard::State& state = process_->guard->state();
    if (!state.holder && !state.heldPrevious && !record_ && sleepDisabled_ != before_)
        violate("free, but the setting is not as it was");
    const auto open = std::ranges::count_if(clients_, [](const auto& c) { return c && !c->lost; });
    if (state.connections != open)
        violate("the connections are miscounted");
}

void ExploredMac::violate(std::string_view what) {
    if (violation_.empty())
        violation_ = what;
}

std::uint64_t ExploredMac::holderKey() const {
    const auto& holder = process_->guard->state().holder;
    if (!holder)
        return 0;
    for (std::uint64_t client = 0; client < clients_.size(); ++client) {
        if (clients_.at(client) && clients_.at(client)->id() == *holder)
            return client + 1;
    }
    return 3;
}

std::uint64_t ExploredMac::ageKey() const {
    if (age() < 0)
        return 0;
    if (age() < threshold())
        return 1;
    return age() == threshold() ? 2 : 3;
}

std::uint64_t ExploredMac::key() const {
    std::uint64_t key = 1;
    const auto add = [&key](std::uint64_t value, std::uint64_t count) {
        key = key * count + value;
    };
    const auto addTruth = [&add](std::optional<bool> value) {
        const int truth = value.value_or(false) ? 2 : 1;
        add(value ? static_cast<std::uint64_t>(truth) : 0, 3);
    };

    addTruth(before_);
    addTruth(sleepDisabled_);
    addTruth(record_.transform([](const auto& record) { return record.previous; }));
    for (const auto& client : clients_)
        addTruth(client ? std::optional(client->lost) : std::nullopt);
    addTruth(process_ != nullptr);
    if (process_) {
        const Guard::State& state = process_->guard->state();
        add(holderKey(), 4);
        addTruth(state.heldPrevious);
        addTruth(state.holder && state.floor == BatteryFloor(highFloor));
        add(ageKey(), 4);
    }
    return key;
}

} // namespace velmo
