#include "daemon/Startup.h"

#include "core/power/PowerService.h"
#include "daemon/Session.h"
#include "lab/instruments/GuardedMac.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Records the order of the calls of the start-up.
class FakeHost final : public DaemonHost {
public:
    RecordStore& recordStore(std::string_view directory, std::string_view name) override {
        mac.events.push_back(std::string(directory) + "/" + std::string(name));
        return mac.records;
    }

    bool startedByRoot() override {
        mac.events.emplace_back("root?");
        return root;
    }

    std::optional<std::string> currentSigningTeam() override {
        mac.events.emplace_back("team?");
        return team;
    }

    PowerMachine& machine() override { return mac.machine; }

    SerialQueue& guardQueue() override { return mac.queue; }

    void writeLog(std::string_view line) override { mac.events.emplace_back(line); }

    void listen(std::string_view service, std::shared_ptr<Guard> created) override {
        mac.events.push_back("listen " + std::string(service));
        mac.guard = std::move(created);
    }

    void repeat(double seconds, std::function<void()> handler) override {
        mac.events.push_back("repeat " + std::to_string(seconds));
        tick = std::move(handler);
    }

    void onTermination(std::function<void()> handler) override {
        mac.events.emplace_back("SIGTERM");
        terminate = std::move(handler);
    }

    void exitProcess(int status) override { mac.exits.push_back(status); }

    void park() override { mac.events.emplace_back("park"); }

    GuardedMac mac;
    bool root = true;
    std::optional<std::string> team = "TEAM";
    std::function<void()> tick;
    std::function<void()> terminate;
};

constexpr const char* recordPath = "/var/db/velmo/power-daemon.json";

TEST(Startup, RefusesToRunForAnyoneButRoot) {
    FakeHost host;
    host.root = false;
    host.mac.records.record = PowerDaemonRecord{};
    runDaemon(host);
    EXPECT_THAT(host.mac.takeEvents(),
                ElementsAre(recordPath, "root?", "VelmoPowerDaemon: must run as root (launchd)\n"));
    EXPECT_THAT(host.mac.exits, ElementsAre(1));
}

TEST(Startup, RecoversBeforeItAcceptsConnections) {
    FakeHost host;
    host.mac.machine.sleepDisabled = true;
    host.mac.records.record = PowerDaemonRecord{.previous = false, .since = 1};
    runDaemon(host);
    EXPECT_THAT(host.mac.takeEvents(),
                ElementsAre(recordPath, "root?", "team?",
                            "VelmoPowerDaemon: a hold was left behind; sleep back\n",
                            "pmset -a disablesleep 0", "record removed",
                            "VelmoPowerDaemon: sleep enabled again (recovered)\n",
                            "listen io.velmo.host.power", "repeat 5.000000", "SIGTERM", "park"));
    EXPECT_THAT(host.mac.exits, IsEmpty());
}

TEST(Startup, ConnectsTheTeamTheTimerAndTheSignalWithTheGuard) {
    FakeHost host;
    runDaemon(host);
    host.mac.takeEvents();

    const auto connection = std::make_shared<FakeConnection>(1, host.mac.events);
    ASSERT_TRUE(host.mac.guard->acceptConnection(connection, Session::make));
    EXPECT_EQ(host.mac.takeEvents().front(),
              "requirement " + powerClientRequirement("TEAM").value());

    connection->session->hold(20, [](bool, std::string_view) {});
    host.mac.queue.runAll();
    host.mac.machine.clock += 36;
    host.tick();
    host.mac.queue.runAll();
    EXPECT_EQ(host.mac.takeEvents().back(), "VelmoPowerDaemon: sleep enabled again (heartbeat)\n");

    connection->session->hold(20, [](bool, std::string_view) {});
    host.mac.queue.runAll();
    host.terminate();
    EXPECT_EQ(host.mac.takeEvents().back(), "VelmoPowerDaemon: sleep enabled again (stopping)\n");
    EXPECT_THAT(host.mac.exits, ElementsAre(0));
}

TEST(Startup, AnEventIsOneLine) {
    EXPECT_EQ(logLine("a\nb\r\x1B\u00E9"), "VelmoPowerDaemon: a b  \u00E9\n");
}

TEST(Startup, EndsOnSigtermEvenWhenSleepCannotBeRestored) {
    FakeHost host;
    runDaemon(host);
    EXPECT_TRUE(host.mac.guard->hold(ClientId{1}, 20));
    host.mac.machine.breakPmset(FakeMachine::Pmset::fails);
    host.terminate();
    EXPECT_THAT(host.mac.exits, ElementsAre(0));
    EXPECT_TRUE(host.mac.records.record); // for the next start
}

TEST(Startup, RefusesEveryClientIfItHasNoTeam) {
    FakeHost host;
    host.team.reset();
    runDaemon(host);
    EXPECT_FALSE(host.mac.guard->acceptConnection(
        std::make_shared<FakeConnection>(1, host.mac.events), Session::make));
    EXPECT_EQ(host.mac.takeEvents().back(),
              "VelmoPowerDaemon: unsigned daemon: refusing every caller\n");
}

} // namespace
} // namespace velmo
