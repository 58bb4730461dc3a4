#include "lab/guard-walk/ExploredMac.h"

#include "core/power/PowerGuardPolicy.h"
#include "daemon/Session.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace velmo {

namespace {

constexpr double past = 0.5; ///< seconds beyond a threshold

constexpr std::int64_t lowFloor = 10;
constexpr std::int64_t highFloor = 50;

constexpr auto names = std::to_array<std::string_view>({
    "start",
    "crash",
    "SIGTERM",
    "tick",
    "on the threshold",
    "past the threshold",
    "half a minute later",
    "the setting lands",
    "the record is lost",
    "the record rots",
    "all is mended",
    "the lid is shut",
    "the lid is opened",
    "somebody enables sleep",
    "connect",
    "lose",
    "let go",
    "hold floor 10",
    "hold floor 50",
    "heartbeat",
    "release",
    "report",
    "SIGTERM, and a hold behind it",
});

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

    [[nodiscard]] std::optional<std::int64_t> processId() const override { return std::nullopt; }

    [[nodiscard]] std::optional<std::string> programName() const override { return std::nullopt; }

    bool requireCodeSignature(const std::string&) override { return true; }

    void exportSession(std::shared_ptr<VelmoPowerProtocol> exported) override {
        session = std::move(exported);
    }

    void onInvalidation(std::function<void()> handler) override { invalidate = std::move(handler); }

    void resume() override {}

    std::shared_ptr<VelmoPowerProtocol> session;
    std::function<void()> invalidate;
    bool lost = false;

private:
    ClientId id_;
};

ExploredMac::ExploredMac(bool sleepDisabled, Aspect aspect, Flaw flaw)
    : before_(sleepDisabled), aspect_(aspect), flaw_(flaw), sleepDisabled_(sleepDisabled) {
}

ExploredMac::~ExploredMac() = default;

bool ExploredMac::possible(Event event) const {
    using enum Happening;
    if (loss_ != Loss::none)
        return false;
    switch (event.happening) {
    case start:
        return !process_;
    case settingLands:
        return late_.has_value();
    case recordIsLost:
    case recordRots:
        return aspect_ == Aspect::faults && record_ && !rotten_;
    case faultsAreGone:
        return lasting_.has_value();
    case shutLid:
        return aspect_ == Aspect::lid && !lidIsShut_;
    case openLid:
        return lidIsShut_;
    case enableByHand:
        return aspect_ == Aspect::lid && process_ && state().holder && sleepDisabled_ && !late_;
    default:
        break;
    }
    if (!process_)
        return false;
    const auto& client = clients_.at(event.client);
    switch (event.happening) {
    case onThreshold:
        return age() < threshold();
    case pastThreshold:
        return age() <= threshold();
    case atLidDelay:
        return aspect_ == Aspect::lid && owedKey() == 1;
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
    case report:
    case terminateWithHoldBehind:
        return client != nullptr;
    default:
        return true;
    }
}

void ExploredMac::run(Event event, Choices& choices) {
    choices_ = &choices;
    surroundings_ = {};
    paused_ = 0;
    try {
        happen(event);
    } catch (const Killed&) {
        trapped_ = false; // the sleep that the daemon owes is not on the disk
        bury();
    } catch (const Ended&) {
        checkEnd();
        bury();
    }
    // The daemon promises the sleep that it owes only as long as nothing else is wrong.
    trapped_ = trapped_ && !isDisturbed();
    checkRest();
    checkTelling(event);
    choices_ = nullptr;
}

void ExploredMac::run(Event event, Choices& choices, const OnKill& onKill) {
    onKill_ = &onKill;
    run(event, choices);
    onKill_ = nullptr;
}

void ExploredMac::bury() {
    process_.reset();
    clients_ = {};
    isTold_ = false;
}

void ExploredMac::happen(Event event) {
    auto& client = clients_.at(event.client);
    switch (event.happening) {
    case Happening::start:
        process_ = std::make_unique<Process>();
        runDaemon(*this);
        trapped_ = state().sleepOwedSince.has_value();
        break;
    case Happening::crash:
        throw Killed{};
    case Happening::terminate:
        trapped_ = false;
        process_->isEnding = true;
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
    case Happening::atLidDelay:
        clock_ = std::max(clock_, state().sleepOwedSince->seconds + Guard::lidDelay);
        break;
    case Happening::settingLands:
        land();
        return;
    case Happening::recordIsLost:
    case Happening::recordRots:
        recordWasLost_ = true;
        rotten_ = event.happening == Happening::recordRots;
        if (!rotten_)
            record_.reset();
        return;
    case Happening::faultsAreGone:
        lasting_.reset();
        return;
    case Happening::shutLid:
    case Happening::openLid:
        lidIsShut_ = event.happening == Happening::shutLid;
        trapped_ = false; // the Mac looks at a lid that moves
        return;
    case Happening::enableByHand:
        sleepDisabled_ = false;
        return;
    case Happening::connect:
        client = std::make_shared<Connection>(++connectionsMade_);
        if (!process_->guard->acceptConnection(client, Session::make))
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
    switch (event.happening) {
    case Happening::holdLow:
        holdAndWatch(*session, lowFloor, replies);
        break;
    case Happening::holdHigh:
        holdAndWatch(*session, highFloor, replies);
        break;
    case Happening::heartbeat:
        session->heartbeat([&, holder = state().holder](bool ok) {
            ++replies;
            if (ok && holder != client->id())
                violate("a client was told that it holds, and does not");
        });
        break;
    case Happening::report:
        askAndCompare(*client, replies);
        return;
    case Happening::terminateWithHoldBehind:
        trapped_ = false;
        process_->isEnding = true;
        process_->queue.behindSync = [this, session] {
            session->hold(lowFloor, [this](bool ok, std::string_view) {
                if (ok)
                    violate("a hold was granted after the last restore");
            });
        };
        process_->terminate();
        return;
    default:
        session->release([&](bool) { ++replies; });
    }
    process_->queue.runAll();
    if (replies != 1)
        violate("a call was answered " + std::to_string(replies) + " times");
}

/// Checks that a report tells the client the truth and changes nothing.
void ExploredMac::askAndCompare(const Connection& client, int& replies) {
    const Guard::State before = state();
    isAsking_ = true;
    client.session->report([&](const std::optional<HoldReport>& told) {
        ++replies;
        if (!told || told->holder.has_value() != state().holder.has_value()
            || (told->holder && told->holder->isCaller != (state().holder == client.id())))
            violate("a client is told wrong who holds");
        else if (told->pending ? state().holder || !isRemembered()
                               : !state().holder && state().heldPrevious == false)
            violate("a client is told wrong what is still to be restored");
        else if (told->sleepDisabled.value_or(sleepDisabled_) != sleepDisabled_
                 || (told->recordIsUnreadable && !record_))
            violate("a client is told wrong what was read");
    });
    process_->queue.runAll();
    isAsking_ = false;
    if (replies != 1 || state() != before)
        violate("a report was not answered, or changed something");
}

void ExploredMac::holdAndWatch(VelmoPowerProtocol& session, std::int64_t floor, int& replies) {
    const auto holder = state().holder;
    session.hold(floor, [this, holder, &replies](bool ok, std::string_view reason) {
        ++replies;
        if (ok != reason.empty())
            violate("a hold was answered with the wrong kind of reason");
        if (ok && holder && holder != state().holder)
            violate("a second client was told that it holds");
        trapped_ = trapped_ && !ok;
    });
}

void ExploredMac::settle() {
    Choices nothingWrong;
    const auto runIfPossible = [&](Event event) {
        if (possible(event))
            run(event, nothingWrong);
        nothingWrong = {};
    };
    runIfPossible({.happening = Happening::faultsAreGone});
    runIfPossible({.happening = Happening::settingLands});
    runIfPossible({.happening = Happening::start});
    for (std::uint8_t client = 0; client < clients_.size(); ++client) {
        runIfPossible({.happening = Happening::loseConnection, .client = client});
        runIfPossible({.happening = Happening::letGo, .client = client});
    }
    runIfPossible({.happening = Happening::tick}); // a hold that came in on a lost connection
    for (const Happening happening :
         {Happening::pastThreshold, Happening::tick, Happening::atLidDelay, Happening::tick,
          Happening::pastThreshold, Happening::tick})
        runIfPossible({.happening = happening});
    if (loss_ != Loss::none)
        return;
    if (process_)
        violate("the daemon does not end although nobody needs it");
    if (sleepDisabled_ != before_)
        violate("the setting was not put back");
    if (record_ && !rotten_)
        violate("a record is left behind");
    if (trapped_ && lidIsShut_)
        violate("the Mac stays awake with its lid shut");
}

void ExploredMac::writeLog(std::string_view line) {
    if (process_->guard && line.contains("sleep enabled again") && !line.contains("stopping"))
        trapped_ = state().sleepOwedSince.has_value();
    if (!line.contains("sleep is enabled although a client holds"))
        return;
    if (std::exchange(isTold_, true) || !state().holder || sleepDisabled_)
        violate("sleep is said to be enabled during a hold, and is not, or was said to be");
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

std::size_t ExploredMac::ask(Part part, std::initializer_list<std::string_view> options) {
    if (lasting_ && lasting_->part == part)
        return lasting_->behaviour;
    auto& kept = surroundings_.at(std::to_underlying(part));
    if (!kept) {
        kept = choices_->choose(options);
        const bool mayLast = aspect_ == Aspect::faults && part < Part::supply && !lasting_;
        if (*kept != 0 && mayLast && choices_->choose({"", "from now on"}) == 1)
            lasting_ = {.part = part, .behaviour = *kept};
    }
    return *kept;
}

/// Does something to the Mac. By the second option the daemon is killed just before, by the third
/// just after.
void ExploredMac::affect(std::initializer_list<std::string_view> options,
                         const std::function<void()>& effect) {
    enum : std::uint8_t { before = 1, after };

    if (isAsking_)
        violate("a report does something to the Mac");
    const std::size_t question = choices_->asked();
    showKilled(question, before);
    const std::size_t killed = onKill_ ? choices_->choose({""}) : choices_->choose(options);
    if (killed == before)
        throw Killed{};
    effect();
    checkMoment();
    showKilled(question, after);
    if (killed == after)
        throw Killed{};
}

/// Shows the Mac as it would be if the daemon were killed now, then goes on as before.
void ExploredMac::showKilled(std::size_t question, std::uint8_t when) {
    if (!onKill_ || !choices_->isNewGround())
        return;
    auto process = std::move(process_);
    auto clients = std::move(clients_);
    const auto kept = std::tuple(trapped_, isTold_, loss_, violation_);
    trapped_ = false;
    bury();
    checkRest();
    Choices::Script script = choices_->script();
    script.resize(std::max(script.size(), question + 1));
    script[question] = when;
    (*onKill_)(*this, std::move(script));
    std::tie(trapped_, isTold_, loss_, violation_) = kept;
    process_ = std::move(process);
    clients_ = std::move(clients);
}

std::optional<std::string> ExploredMac::runPmset(PmsetArguments arguments) {
    // A tool that could not be started looks the same as one that failed.
    enum { works, fails, lies, worksAndFails, lands };

    if (isAsking_)
        violate("a report runs pmset");
    if (arguments.size() == 1) {
        if (ask(Part::pmsetRead, {"", "pmset -g fails"}) == fails)
            return std::nullopt;
        return std::string("SleepDisabled ") + (late_.value_or(sleepDisabled_) ? "1" : "0");
    }
    const bool on = arguments.end()[-1] == "1";
    const std::size_t tool =
        on ? ask(Part::pmsetOn, {"", "pmset 1 fails", "pmset 1 lies",
                                 "pmset 1 works and says it failed", "pmset 1 lands late"})
           : ask(Part::pmsetOff, {"", "pmset 0 fails", "pmset 0 lies",
                                  "pmset 0 works and says it failed", "pmset 0 lands late"});
    affect({"", "killed before pmset", "killed after pmset"}, [&] {
        if (tool != fails && tool != lies)
            set(on, tool == lands);
    });
    return tool == fails || tool == worksAndFails ? std::nullopt : std::optional<std::string>("");
}

/// Sets the sleep setting, now or late. A newer setting replaces one that has not landed.
void ExploredMac::set(bool sleepDisabled, bool late) {
    late_ = sleepDisabled;
    if (!late)
        land();
}

void ExploredMac::land() {
    sleepDisabled_ = *std::exchange(late_, {});
    if (isForgotten())
        loss_ = Loss::lateAfterUndo;
}

void ExploredMac::pause(double seconds) {
    paused_ += seconds;
    if (!late_)
        return;
    if (choices_->choose({"", "and stays late"}) == 0)
        land();
    else
        paused_ += Guard::maxLateness;
}

std::optional<bool> ExploredMac::sleepDisabledProperty() {
    if (ask(Part::property, {"", "property unreadable"}) == 1)
        return std::nullopt;
    return flaw_ == Flaw::propertyAlwaysEnabled ? false : sleepDisabled_;
}

std::optional<PowerSourceSnapshot> ExploredMac::powerSources() {
    const std::size_t supply = ask(Part::supply, {"", "on battery at 30 %", "on battery at 5 %"});
    PowerSourceSnapshot snapshot{.providingType = supply == 0 ? "AC Power" : "Battery Power",
                                 .sources = {}};
    snapshot.sources.push_back({.type = "InternalBattery",
                                .currentCapacity = supply == 2 ? 5 : 30,
                                .maximumCapacity = 100});
    return snapshot;
}

ThermalState ExploredMac::thermalState() {
    return ask(Part::heat, {"", "hot"}) == 1 ? ThermalState::serious : ThermalState::nominal;
}

std::optional<LidState> ExploredMac::lid() {
    return LidState{.isShut = lidIsShut_, .causesSleep = true};
}

bool ExploredMac::requestSleep() {
    if (state().holder)
        violate("the Mac is put to sleep while a client holds");
    if (!lidIsShut_)
        violate("the Mac is put to sleep with its lid open");
    if (ask(Part::request, {"", "the request to sleep fails"}) == 1)
        return false;
    trapped_ = false;
    return true;
}

std::optional<PowerDaemonRecord> ExploredMac::read() {
    if (!record_ || rotten_ || ask(Part::reading, {"", "record unreadable"}) == 1)
        return std::nullopt;
    return record_;
}

bool ExploredMac::write(const PowerDaemonRecord& record) {
    // Like the real store, does not overwrite a record that can't be read, unless it can't be
    // decoded.
    if (record_ && !rotten_ && !read())
        return false;
    if (ask(Part::writing, {"", "record unwritable"}) == 1)
        return false;
    affect({"", "killed before writing", "killed after writing"}, [&] {
        if (flaw_ != Flaw::recordIsNotKept)
            record_ = record;
        rotten_ = recordWasLost_ = false;
    });
    return true;
}

void ExploredMac::remove() {
    if (ask(Part::removing, {"", "record stays"}) == 1)
        return;
    affect({"", "killed before removing", "killed after removing"}, [&] {
        record_.reset();
        rotten_ = false;
        if (sleepDisabled_ && late_ != false && !before_ && ask(Part::property, {"", ""}) == 1)
            loss_ = Loss::blindUndo;
    });
}

bool ExploredMac::isUnreadable() {
    return record_ && !read();
}

void ExploredMac::writeLastEnd(const HoldEnd&) {
    if (process_->guard && !process_->isEnding && (state().holder || state().heldPrevious))
        violate("an end was written down while there was still something to restore");
}

double ExploredMac::age() const {
    return SteadyTime{clock_} - (state().holder ? state().lastBeat : state().idleSince);
}

double ExploredMac::threshold() const {
    return state().holder ? PowerGuardPolicy::heartbeatTimeout : PowerGuardPolicy::idleExit;
}

/// Tells whether the record or the running daemon knows that sleep is to be enabled again.
bool ExploredMac::isRemembered() const {
    return (record_ && !rotten_ && !record_->previous)
           || (process_ && process_->guard && state().heldPrevious == false);
}

/// Tells whether sleep stays disabled on the daemon's behalf and nothing knows it. A setting that
/// pmset has accepted counts as in force: without the property no program can know better.
bool ExploredMac::isForgotten() const {
    return sleepDisabled_ && late_ != false && !before_ && !isRemembered();
}

bool ExploredMac::isDisturbed() const {
    const auto requests = std::to_underlying(Part::request);
    return late_ || lasting_
           || std::ranges::any_of(surroundings_.begin(), surroundings_.begin() + requests,
                                  [](const auto& behaviour) { return behaviour.value_or(0) != 0; });
}

void ExploredMac::checkMoment() {
    if (isForgotten() && loss_ == Loss::none)
        violate("sleep is disabled and nothing says so");
}

void ExploredMac::checkRest() {
    if (isForgotten() && loss_ == Loss::none) {
        if (!recordWasLost_)
            violate("nothing says that sleep is disabled");
        loss_ = Loss::record;
    }
    if (!process_)
        return;
    if (!state().holder && !state().heldPrevious && !record_ && loss_ == Loss::none && !late_
        && sleepDisabled_ != before_)
        violate("free, but the setting is not as it was");
    const auto open = std::ranges::count_if(clients_, [](const auto& c) { return c && !c->lost; });
    if (state().connections != open)
        violate("the connections are miscounted");
}

/// Checks a daemon that has ended by itself although nothing went wrong: the setting must be as
/// before.
void ExploredMac::checkEnd() {
    if (choices_->isUneventful() && !lasting_ && !late_ && sleepDisabled_ != before_)
        violate("the daemon ended without having put the setting back");
}

void ExploredMac::checkTelling(Event event) {
    const bool isHeld = process_ && state().holder;
    isTold_ = isTold_ && isHeld;
    const bool isReadable = !isDisturbed();
    if (event.happening == Happening::tick && isHeld && !sleepDisabled_ && isReadable && !isTold_)
        violate("nobody is told that sleep is enabled during a hold");
}

void ExploredMac::violate(std::string_view what) {
    if (violation_.empty())
        violation_ = what;
}

/// Returns the client's part of the key, which is the same for the first client and the second.
std::uint64_t ExploredMac::clientKey(const std::shared_ptr<Connection>& client) const {
    if (!client)
        return 0;
    const bool holds = process_ && state().holder == client->id();
    return (client->lost ? 1U : 2U) + (holds ? 2U : 0U);
}

std::uint64_t ExploredMac::ageKey() const {
    if (age() < threshold())
        return 0;
    return age() == threshold() ? 1 : 2;
}

std::uint64_t ExploredMac::owedKey() const {
    if (!state().sleepOwedSince)
        return 0;
    return SteadyTime{clock_} - *state().sleepOwedSince < Guard::lidDelay ? 1 : 2;
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
    addTruth(late_);
    addTruth(record_.transform([](const auto& record) { return record.previous; }));
    addTruth(rotten_);
    addTruth(recordWasLost_);
    addTruth(lidIsShut_);
    addTruth(trapped_);
    addTruth(isTold_);
    add(std::to_underlying(loss_), 4);
    add(lasting_ ? std::size_t{std::to_underlying(lasting_->part)} * 8 + lasting_->behaviour : 0,
        128);
    auto keys = std::array{clientKey(clients_[0]), clientKey(clients_[1])};
    std::ranges::sort(keys);
    for (const std::uint64_t each : keys)
        add(each, 5);
    addTruth(process_ != nullptr);
    if (process_) {
        addTruth(state().holder.has_value());
        addTruth(state().heldPrevious);
        addTruth(state().holder && state().floor == BatteryFloor(highFloor));
        add(ageKey(), 3);
        add(aspect_ == Aspect::lid ? owedKey() : 0, 3);
    }
    return key;
}

} // namespace velmo
