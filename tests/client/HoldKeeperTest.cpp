#include "client/HoldKeeper.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A daemon that replies when the test tells it to.
class FakeDaemon final : public VelmoPowerProtocol {
public:
    explicit FakeDaemon(std::vector<std::string>& calls) : calls_(calls) {}

    void hold(std::int64_t batteryFloor, HoldReply reply) override {
        calls_.push_back("hold " + std::to_string(batteryFloor));
        onHold = std::move(reply);
    }

    void heartbeat(Reply reply) override {
        calls_.emplace_back("heartbeat");
        onReply = std::move(reply);
    }

    void release(Reply reply) override {
        calls_.emplace_back("release");
        onReply = std::move(reply);
    }

    void report(ReportReply reply) override {
        calls_.emplace_back("report");
        onReport = std::move(reply);
    }

    HoldReply onHold;
    Reply onReply;
    ReportReply onReport;

private:
    std::vector<std::string>& calls_;
};

constexpr auto stateNames = std::to_array<std::string_view>(
    {"connecting", "holding", "riding", "refused", "unreachable", "released"});

std::string told(const HoldKeeper::Status& status) {
    std::string text(stateNames.at(static_cast<std::size_t>(status.state)));
    if (status.holder)
        text += " on " + std::to_string(status.holder->processId.value_or(0));
    return status.reason.empty() ? text : text + ": " + status.reason;
}

HoldReport heldBy(std::int64_t process) {
    return {.holder = HolderReport{.processId = process}};
}

HoldEnd endOf(HoldEnding ending) {
    return {.how = std::string(rawText(ending)), .at = 1};
}

HoldReport freeAfter(HoldEnding ending) {
    return {.ownEnd = endOf(ending), .lastEnd = endOf(ending)};
}

constexpr auto outcomeNames =
    std::to_array<std::string_view>({"restored", "notHeld", "pending", "unknown"});

class HoldKeeperTest : public testing::Test, protected PowerLink {
protected:
    std::shared_ptr<VelmoPowerProtocol> connect(std::function<void(Loss)> whenLost) override {
        calls.emplace_back("connect");
        onLost = std::move(whenLost);
        daemon = std::make_shared<FakeDaemon>(calls);
        return daemon;
    }

    HoldKeeper make(HoldKeeper::Options options) {
        return {*this,
                [this](double seconds, std::function<void()> callback) {
                    timers.emplace_back(now + seconds, std::move(callback));
                },
                [this](const HoldKeeper::Status& status) { said.push_back(told(status)); },
                options};
    }

    void lose(Loss loss = Loss::ended) { onLost(loss); }

    void grant() {
        keeper.start();
        daemon->onHold(true, "");
        takeCalls();
        said.clear();
    }

    void ride() {
        keeper.start();
        daemon->onHold(false, "busy");
        daemon->onReport(heldBy(7));
        EXPECT_THAT(std::exchange(said, {}), ElementsAre("riding on 7"));
        takeCalls();
    }

    void stop() {
        keeper.stop([this](HoldKeeper::Outcome outcome) {
            said.push_back("stopped: "
                           + std::string(outcomeNames.at(static_cast<std::size_t>(outcome))));
        });
    }

    void pass(double seconds) {
        for (now += seconds; !timers.empty();) {
            const auto next = std::ranges::min_element(timers, {}, [](auto& t) { return t.first; });
            if (next->first > now)
                return;
            const auto callback = std::move(next->second);
            timers.erase(next);
            callback();
        }
    }

    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    double now = 0;
    std::vector<std::string> calls;
    std::vector<std::string> said;
    std::vector<std::pair<double, std::function<void()>>> timers;
    std::function<void(Loss)> onLost;
    std::shared_ptr<FakeDaemon> daemon;
    HoldKeeper keeper = make({.batteryFloor = 25});
};

TEST_F(HoldKeeperTest, HoldsAndSendsHeartbeats) {
    keeper.start();
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25"));
    daemon->onHold(true, "");
    for (int i = 0; i < 3; ++i) {
        pass(9.9);
        EXPECT_THAT(takeCalls(), IsEmpty());
        pass(0.1);
        EXPECT_THAT(takeCalls(), ElementsAre("heartbeat"));
        daemon->onReply(true);
    }
    EXPECT_THAT(said, ElementsAre("holding"));
}

TEST_F(HoldKeeperTest, AsksAgainUnlessAnotherClientReleasedTheHold) {
    struct Case {
        HoldEnding ending;
        bool persist;
        bool asksAgain;
    };

    for (const auto& [ending, persist, asksAgain] : {Case{HoldEnding::battery, false, true},
                                                     {HoldEnding::heartbeat, false, true},
                                                     {HoldEnding::releasedByAnother, false, false},
                                                     {HoldEnding::releasedByAnother, true, true}}) {
        HoldKeeper one = make({.batteryFloor = 25, .persist = persist});
        one.start();
        daemon->onHold(true, "");
        pass(10);
        takeCalls();
        daemon->onReply(false);
        EXPECT_THAT(takeCalls(), ElementsAre("report"));
        const HoldReport report{.ownEnd = endOf(ending), .lastEnd = endOf(HoldEnding::stopping)};
        daemon->onReport(report);
        EXPECT_EQ(takeCalls().size(), asksAgain ? 1U : 0U) << rawText(ending);
        EXPECT_EQ(said.back(),
                  (asksAgain ? "connecting: " : "released: ") + std::string(rawText(ending)));
        pass(29);
        EXPECT_THAT(takeCalls(), IsEmpty());
    }
}

TEST_F(HoldKeeperTest, TellsEachRefusalOnceWhileItKeepsAsking) {
    grant();
    lose();
    daemon->onHold(false, "battery");
    pass(5);
    daemon->onHold(false, "battery");
    pass(5);
    daemon->onHold(false, "thermal");
    pass(5);
    daemon->onHold(true, "");
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25", "hold 25", "hold 25", "hold 25"));
    EXPECT_THAT(said, ElementsAre("connecting: connection", "refused: battery", "refused: thermal",
                                  "holding"));
}

TEST_F(HoldKeeperTest, ADaemonThatIsNotThereIsLookedForAgain) {
    keeper.start();
    lose();
    EXPECT_THAT(said, ElementsAre("unreachable"));
    pass(1);
    lose();
    pass(1);
    lose(Loss::tooManyClients);
    pass(1);
    daemon->onHold(true, "");
    EXPECT_EQ(takeCalls().size(), 8U);
    EXPECT_THAT(said, ElementsAre("unreachable", "unreachable: full", "holding"));
    lose();
    lose();
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25")) << "no call without a pause";
    pass(1);
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25"));
}

TEST_F(HoldKeeperTest, ADaemonThatDoesNotAnswerIsGivenUp) {
    grant();
    pass(10);
    pass(29.9);
    EXPECT_THAT(said, IsEmpty());
    pass(0.1);
    EXPECT_THAT(said, ElementsAre("unreachable: silent"));
    pass(1);
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat", "connect", "hold 25"));
}

TEST_F(HoldKeeperTest, RidesOnTheHoldOfAnotherAndTakesOver) {
    ride();
    pass(2);
    daemon->onReport(std::nullopt);
    pass(2);
    daemon->onReport(heldBy(8)); // another client that rode was faster
    pass(2);
    daemon->onReport(freeAfter(HoldEnding::clientGone));
    daemon->onHold(false, "busy");
    daemon->onReport(heldBy(9));
    pass(2);
    daemon->onReport(freeAfter(HoldEnding::released));
    daemon->onHold(true, "");
    EXPECT_THAT(said, ElementsAre("riding", "riding on 8", "riding on 9", "holding"));
    EXPECT_THAT(takeCalls(), ElementsAre("report", "report", "report", "hold 25", "report",
                                         "report", "hold 25"));
}

TEST_F(HoldKeeperTest, StopsRidingWhenAnotherClientReleasesTheHold) {
    ride();
    keeper.checkNow();
    EXPECT_THAT(takeCalls(), ElementsAre("report"));
    daemon->onReport(freeAfter(HoldEnding::releasedByAnother));
    EXPECT_THAT(said, ElementsAre("released: released by another"));
    pass(100);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HoldKeeperTest, WithoutRidingBusyIsARefusal) {
    HoldKeeper one = make({.batteryFloor = 25, .rides = false});
    one.start();
    daemon->onHold(false, "busy");
    EXPECT_THAT(said, ElementsAre("refused: busy"));
}

TEST_F(HoldKeeperTest, AsksForReportsAgainAfterALostConnection) {
    grant();
    pass(10);
    daemon->onReply(false);
    lose();
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat", "report", "connect", "hold 25"));
    daemon->onHold(false, "busy");
    EXPECT_THAT(said, ElementsAre("connecting: connection"));
    EXPECT_THAT(takeCalls(), ElementsAre("report"));
}

TEST_F(HoldKeeperTest, SendsAHeartbeatAtOnceWhenAskedToCheck) {
    grant();
    pass(3);
    keeper.checkNow();
    keeper.checkNow(); // the answer is on its way
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat"));
    daemon->onReply(true);
    pass(9);
    EXPECT_THAT(takeCalls(), IsEmpty()); // only one chain of heartbeats runs
    pass(1);
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat"));
}

TEST_F(HoldKeeperTest, RepliesAndTimersOfAnEarlierAttemptAreDropped) {
    grant();
    lose();
    const auto late = daemon->onHold;
    takeCalls();
    daemon->onHold(false, "thermal");
    lose();
    late(true, "");
    EXPECT_EQ(keeper.status().state, HoldKeeper::State::connecting);
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25"));
}

TEST_F(HoldKeeperTest, ReleasesWhatItStillHolds) {
    grant();
    stop();
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat"));
    daemon->onReply(true);
    EXPECT_THAT(takeCalls(), ElementsAre("release"));
    EXPECT_THAT(said, IsEmpty());
    daemon->onReply(false);
    pass(100);
    EXPECT_THAT(said, ElementsAre("stopped: pending"));
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HoldKeeperTest, NeverReleasesTheHoldOfASuccessor) {
    grant();
    stop();
    daemon->onReply(false);
    daemon->onReport(heldBy(8));
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat", "report"));
    EXPECT_THAT(said, ElementsAre("stopped: notHeld"));
}

TEST_F(HoldKeeperTest, ReleasesAHoldThatIsGrantedWhileItStops) {
    ride();
    pass(HoldKeeper::ridingInterval);
    daemon->onReport(freeAfter(HoldEnding::battery));
    stop();
    daemon->onReply(true); // the hold was granted before
    daemon->onReply(true);
    EXPECT_THAT(takeCalls(), ElementsAre("report", "hold 25", "heartbeat", "release"));
    EXPECT_THAT(said, ElementsAre("stopped: restored"));
}

TEST_F(HoldKeeperTest, DropsTheConnectionWhenStoppedBeforeTheHoldIsGranted) {
    keeper.start();
    stop();
    EXPECT_EQ(daemon.use_count(), 1) << "the connection is let go";
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25"));
    EXPECT_THAT(said, ElementsAre("stopped: unknown"));
}

TEST_F(HoldKeeperTest, ReportsTheStateOfTheSettingWhenItStops) {
    struct Case {
        std::string_view name;
        std::optional<HoldReport> report;
        std::string_view outcome;
    };

    HoldReport pending{.pending = true};
    HoldReport unreadable{.recordIsUnreadable = true};
    for (const auto& [name, report, outcome] :
         {Case{"free", freeAfter(HoldEnding::clientGone), "stopped: restored"},
          Case{"another holds", heldBy(7), "stopped: notHeld"},
          Case{"pending", pending, "stopped: pending"},
          Case{"unreadable", unreadable, "stopped: pending"},
          Case{"no report", {}, "stopped: unknown"}, Case{"gone", {}, "stopped: unknown"}}) {
        HoldKeeper one = make({.batteryFloor = 25});
        one.start();
        daemon->onHold(false, "thermal");
        one.stop([this](HoldKeeper::Outcome is) {
            said.push_back("stopped: "
                           + std::string(outcomeNames.at(static_cast<std::size_t>(is))));
        });
        daemon->onReply(false);
        name == "gone" ? lose() : daemon->onReport(report);
        EXPECT_EQ(said.back(), outcome) << name;
        EXPECT_EQ(daemon.use_count(), 1) << name;
    }
    takeCalls();
    pass(100);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HoldKeeperTest, MayBeStoppedFromItsOwnCallbackAndStartedAgain) {
    struct Case {
        std::string_view stopsAt;
        int holds; ///< that were asked for by then
    };

    for (const auto& [stopsAt, holds] :
         {Case{"connecting: connection", 1}, Case{"refused: thermal", 2}, Case{"connecting", 2}}) {
        HoldKeeper* self = nullptr;
        HoldKeeper one(
            *this,
            [this](double seconds, std::function<void()> callback) {
                timers.emplace_back(now + seconds, std::move(callback));
            },
            [&](const HoldKeeper::Status& status) {
                said.push_back(told(status));
                if (said.back() == stopsAt)
                    self->stop(
                        [this](HoldKeeper::Outcome /*outcome*/) { said.emplace_back("stopped"); });
            },
            {.batteryFloor = 25});
        self = &one;
        one.start();
        daemon->onHold(true, "");
        lose();
        if (holds > 1)
            daemon->onHold(false, "thermal");
        if (stopsAt == "connecting")
            one.start();
        pass(100);
        EXPECT_EQ(said.back(), "stopped");
        EXPECT_EQ(std::ranges::count(takeCalls(), "hold 25"), holds) << stopsAt;
        one.start();
        EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25"));
    }
}

} // namespace
} // namespace velmo
