#include "client/HoldKeeper.h"

#include <gmock/gmock.h>

#include <deque>
#include <utility>
#include <vector>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A daemon that answers when the test says so.
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

    void report(ReportReply reply) override { onReport = std::move(reply); }

    HoldReply onHold;
    ReportReply onReport;
    Reply onReply;

private:
    std::vector<std::string>& calls_;
};

std::string told(const HoldKeeper::Status& status) {
    constexpr auto names =
        std::to_array<std::string_view>({"connecting", "holding", "refused", "unreachable"});
    std::string text(names.at(static_cast<std::size_t>(status.state)));
    return status.reason.empty() ? text : text + ": " + status.reason;
}

class HoldKeeperTest : public testing::Test, protected PowerLink {
protected:
    std::shared_ptr<VelmoPowerProtocol> connect(std::function<void()> onLost) override {
        calls.emplace_back("connect");
        lose = std::move(onLost);
        daemon = reachable ? std::make_shared<FakeDaemon>(calls) : nullptr;
        return daemon;
    }

    void grant() {
        keeper.start();
        daemon->onHold(true, "");
        takeCalls();
        said.clear();
    }

    void passTime() {
        const auto [seconds, callback] = std::move(timers.front());
        timers.pop_front();
        callback();
    }

    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
    std::vector<std::string> said;
    std::deque<std::pair<double, std::function<void()>>> timers;
    std::function<void()> lose;
    bool reachable = true;
    std::shared_ptr<FakeDaemon> daemon;
    HoldKeeper keeper{*this,
                      [this](double seconds, std::function<void()> callback) {
                          timers.emplace_back(seconds, std::move(callback));
                      },
                      [this](const HoldKeeper::Status& status) { said.push_back(told(status)); },
                      25};
};

TEST_F(HoldKeeperTest, HoldsAndSendsHeartbeats) {
    keeper.start();
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "hold 25"));
    daemon->onHold(true, "");
    EXPECT_THAT(said, ElementsAre("holding"));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(timers.size(), 1U);
        EXPECT_EQ(timers.front().first, 10);
        passTime();
        EXPECT_THAT(takeCalls(), ElementsAre("heartbeat"));
        daemon->onReply(true);
    }
    EXPECT_EQ(said.size(), 1U);
}

TEST_F(HoldKeeperTest, AHeartbeatAnsweredFalseTakesTheHoldAgainAtOnce) {
    grant();
    passTime();
    daemon->onReply(false);
    EXPECT_THAT(takeCalls(), ElementsAre("heartbeat", "hold 25"));
    daemon->onHold(false, "battery");
    EXPECT_THAT(said,
                ElementsAre("connecting: the power daemon ended the hold", "refused: battery"));

    // It asks on, and does not repeat itself.
    passTime();
    daemon->onHold(false, "battery");
    passTime();
    daemon->onHold(true, "");
    EXPECT_THAT(takeCalls(), ElementsAre("hold 25", "hold 25"));
    EXPECT_EQ(said.size(), 3U);
    EXPECT_EQ(keeper.status().state, HoldKeeper::State::holding);
}

TEST_F(HoldKeeperTest, ADaemonThatGoesAwayIsAskedAgainWhenItIsBack) {
    grant();
    reachable = false;
    lose();
    EXPECT_THAT(said, ElementsAre("connecting: the power daemon went away", "unreachable"));
    timers.pop_front(); // the heartbeat of the lost hold
    passTime();
    reachable = true;
    passTime();
    EXPECT_THAT(takeCalls(), ElementsAre("connect", "connect", "connect", "hold 25"));
    EXPECT_EQ(said.size(), 2U);
}

TEST_F(HoldKeeperTest, RepliesAndTimersOfAnEarlierAttemptAreDropped) {
    grant();
    lose();
    takeCalls();
    passTime(); // the heartbeat of the lost hold
    EXPECT_THAT(takeCalls(), IsEmpty());
    const auto late = daemon->onHold;
    lose();
    late(true, "");
    EXPECT_EQ(keeper.status().state, HoldKeeper::State::connecting);
}

TEST_F(HoldKeeperTest, ReleasesWhatItHolds) {
    grant();
    std::vector<bool> restored;
    keeper.stop([&](bool ok) { restored.push_back(ok); });
    EXPECT_THAT(takeCalls(), ElementsAre("release"));
    EXPECT_THAT(restored, IsEmpty());
    daemon->onReply(false);
    EXPECT_THAT(restored, ElementsAre(false));
    lose();
    EXPECT_THAT(restored, ElementsAre(false));
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HoldKeeperTest, ADaemonLostDuringTheReleaseHasNotRestoredYet) {
    grant();
    std::vector<bool> restored;
    keeper.stop([&](bool ok) { restored.push_back(ok); });
    lose();
    EXPECT_THAT(restored, ElementsAre(false));
    EXPECT_THAT(takeCalls(), ElementsAre("release"));
}

TEST_F(HoldKeeperTest, NeverReleasesTheHoldOfAnother) {
    keeper.start();
    daemon->onHold(false, "busy");
    takeCalls();
    std::vector<bool> restored;
    keeper.stop([&](bool ok) { restored.push_back(ok); });
    EXPECT_THAT(restored, ElementsAre(true));
    EXPECT_THAT(takeCalls(), IsEmpty());
    passTime();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

} // namespace
} // namespace velmo
