#include "daemon/Session.h"

#include "lab/instruments/GuardedMac.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SessionTest : public testing::Test, protected GuardedMac {
protected:
    std::shared_ptr<FakeConnection> connect(std::uint64_t id) {
        auto connection = std::make_shared<FakeConnection>(id, events);
        EXPECT_TRUE(guard->acceptConnection(connection, Session::make));
        queue.runAll();
        takeEvents();
        return connection;
    }

    std::string hold(VelmoPowerProtocol& session, std::int64_t floor = 20) {
        session.hold(floor, [this](bool ok, std::string_view reason) {
            replies.push_back(ok ? "ok" : std::string(reason));
        });
        return reply();
    }

    std::string heartbeat(VelmoPowerProtocol& session) {
        session.heartbeat([this](bool ok) { replies.emplace_back(ok ? "ok" : "no"); });
        return reply();
    }

    std::string release(VelmoPowerProtocol& session) {
        session.release([this](bool ok) { replies.emplace_back(ok ? "ok" : "no"); });
        return reply();
    }

    HoldReport report(VelmoPowerProtocol& session) {
        std::optional<HoldReport> told;
        session.report([&](const std::optional<HoldReport>& report) { told = report; });
        queue.runAll();
        return told.value();
    }

    /// Returns the reply to the last call. The text shows if the call had several replies or none.
    std::string reply() {
        queue.runAll();
        std::string all;
        for (const std::string& each : std::exchange(replies, {}))
            all += each;
        return all;
    }

    std::vector<std::string> replies;
};

TEST_F(SessionTest, AConnectionIsPreparedBeforeItIsResumed) {
    const auto connection = std::make_shared<FakeConnection>(1, events);
    connection->lostAtOnce = true;
    EXPECT_TRUE(guard->acceptConnection(connection, Session::make));
    EXPECT_THAT(takeEvents(), ElementsAre("requirement requirement", "session",
                                          "invalidation handler", "resume"));
    queue.runAll(); // counted up, then down
    EXPECT_EQ(guard->state().connections, 0);
    connection->invalidate();
    queue.runAll();
    EXPECT_EQ(guard->state().connections, 0);
}

TEST_F(SessionTest, RefusesAConnectionWithoutAValidRequirement) {
    const auto connection = std::make_shared<FakeConnection>(1, events);
    connection->requirementWellFormed = false;
    EXPECT_FALSE(guard->acceptConnection(connection, Session::make));
    guard = newGuard(std::nullopt);
    for (int i = 0; i < 2; ++i)
        EXPECT_FALSE(guard->acceptConnection(connection, Session::make));
    queue.runAll();
    const std::string unsignedDaemon = "unsigned daemon: refusing every caller";
    EXPECT_THAT(takeEvents(),
                ElementsAre("requirement requirement", unsignedDaemon, unsignedDaemon));
    EXPECT_EQ(guard->state().connections, 0);
}

TEST_F(SessionTest, EveryCallIsAnsweredOnceFromTheQueue) {
    const auto holder = connect(1);
    const auto other = connect(2);
    EXPECT_EQ(guard->state().connections, 2);
    holder->session->hold(20, [this](bool, std::string_view) { replies.emplace_back("late"); });
    EXPECT_THAT(replies, IsEmpty());
    EXPECT_EQ(reply(), "late");

    EXPECT_EQ(hold(*holder->session), "ok");
    EXPECT_EQ(hold(*other->session), "busy");
    EXPECT_EQ(heartbeat(*holder->session), "ok");
    EXPECT_EQ(heartbeat(*other->session), "no");
    EXPECT_EQ(release(*other->session), "ok"); // any client may end the hold
    EXPECT_EQ(heartbeat(*holder->session), "no");
    EXPECT_EQ(release(*holder->session), "ok"); // nothing left to restore
    EXPECT_EQ(hold(*other->session), "ok");
    machine.breakPmset(FakeMachine::Pmset::fails);
    EXPECT_EQ(release(*other->session), "no");
}

TEST_F(SessionTest, AHoldEndsWithItsConnectionAndNoOther) {
    const auto holder = connect(1);
    const auto other = connect(2);
    EXPECT_EQ(hold(*holder->session), "ok");
    takeEvents();

    other->invalidate();
    queue.runAll();
    EXPECT_EQ(guard->state().connections, 1);
    EXPECT_THAT(takeEvents(), IsEmpty());

    holder->invalidate();
    queue.runAll();
    EXPECT_EQ(guard->state().connections, 0);
    EXPECT_THAT(takeEvents(), ElementsAre("pmset -a disablesleep 0", "record removed",
                                          "sleep enabled again (client gone)"));
}

TEST_F(SessionTest, ALateLossDoesNotEndANewHold) {
    const auto leaving = connect(1);
    const auto other = connect(2);
    EXPECT_EQ(hold(*leaving->session), "ok");
    EXPECT_EQ(release(*leaving->session), "ok");
    leaving->invalidate();
    EXPECT_EQ(hold(*other->session), "ok"); // runs after the loss was posted
    EXPECT_EQ(guard->state().holder, ClientId{2});
}

TEST_F(SessionTest, ReportsTheHolderWithoutChangingAnything) {
    const auto holder = connect(1);
    const auto other = connect(2);
    EXPECT_EQ(report(*other->session), (HoldReport{.sleepDisabled = false}));
    EXPECT_EQ(hold(*holder->session, 5), "ok");
    machine.date += 1000;
    machine.clock += 12;
    EXPECT_EQ(hold(*holder->session, 30), "ok"); // renewed: the hold keeps its beginning
    machine.clock += 7;
    const Guard::State before = guard->state();
    takeEvents();
    HoldReport told{.holder = HolderReport{.processId = 4711,
                                           .program = "velmo-power",
                                           .since = machine.date - 1000,
                                           .batteryFloor = 30,
                                           .heartbeatAge = 7},
                    .sleepDisabled = true};
    EXPECT_EQ(report(*other->session), told);
    told.holder->isCaller = true;
    machine.propertyReadable = false;
    told.sleepDisabled.reset();
    EXPECT_EQ(report(*holder->session), told);
    EXPECT_EQ(guard->state(), before);
    EXPECT_THAT(takeEvents(), IsEmpty()); // pmset is not asked: it may hang
}

TEST_F(SessionTest, TellsHowHoldsEnded) {
    const auto other = connect(2);
    const auto holder = connect(1);
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"released", [&] { release(*holder->session); }},
        {"released by another", [&] { release(*other->session); }},
        {"heartbeat", [&] { tickAfter(36); }},
        {"thermal", [&] { machine.thermal = ThermalState::serious, tick(); }},
        {"battery", [&] { machine.mains = false, machine.battery = 9, tick(); }},
        {"battery",
         [&] {
             machine.mains = false, machine.battery = 25;
             hold(*holder->session, 30); // refused
         }},
        {"stopping", [&] { guard->stop(); }},
    };
    for (const auto& [how, end] : cases) {
        machine = FakeMachine(events);
        machine.date += static_cast<double>(how.size());
        ASSERT_EQ(hold(*holder->session), "ok") << how;
        machine.date += 2; // the end has a date of its own
        end();
        const HoldEnd told{.how = how, .at = machine.date};
        release(*other->session); // nothing to end
        EXPECT_EQ(report(*holder->session),
                  (HoldReport{.sleepDisabled = false, .ownEnd = told, .lastEnd = told}));
        EXPECT_EQ(report(*other->session), (HoldReport{.sleepDisabled = false, .lastEnd = told}));
    }
}

TEST_F(SessionTest, ForgetsHowAHoldEndedWithItsClient) {
    const auto leaving = connect(1);
    const auto staying = connect(2);
    hold(*leaving->session);
    machine.breakPmset(FakeMachine::Pmset::fails);
    leaving->invalidate();
    const HoldEnd gone{.how = "client gone", .at = machine.date};
    EXPECT_EQ(report(*staying->session),
              (HoldReport{.pending = true, .sleepDisabled = true, .lastEnd = gone}));
    EXPECT_EQ(report(*leaving->session).ownEnd, std::nullopt);
    hold(*leaving->session); // was under way
    EXPECT_EQ(report(*staying->session).holder->processId, std::nullopt);
    release(*staying->session);
    EXPECT_EQ(report(*leaving->session).ownEnd, std::nullopt);
    EXPECT_EQ(report(*staying->session).lastEnd->how, "released by another");
}

TEST_F(SessionTest, CanOnlyReleaseOnceItsConnectionIsGone) {
    auto connection = connect(1);
    const auto session = connection->session;
    EXPECT_EQ(hold(*session), "ok");
    connection.reset();
    EXPECT_EQ(hold(*session), "gone");
    EXPECT_EQ(heartbeat(*session), "no");
    session->report([this](const std::optional<HoldReport>& report) {
        replies.emplace_back(report ? "told" : "absent");
    });
    EXPECT_EQ(reply(), "absent");
    EXPECT_EQ(release(*session), "ok");
    EXPECT_FALSE(machine.sleepDisabled);
}

TEST_F(SessionTest, RepliesAtOnceOnceItsGuardIsGone) {
    const auto connection = connect(1);
    guard.reset();
    EXPECT_EQ(hold(*connection->session), "gone");
    EXPECT_EQ(heartbeat(*connection->session), "no");
    EXPECT_EQ(release(*connection->session), "no");
    connection->invalidate();
    queue.runAll();
}

} // namespace
} // namespace velmo
