#include "tests/end_to_end/DaemonTest.h"

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <deque>
#include <thread>

namespace velmo {
namespace {

using testing::ElementsAre;

TEST_F(DaemonTest, RunsForRootOnly) {
    mac.update([](SimulatedMac& state) { state.userId = 501; });
    daemon = run("VelmoPowerDaemonSimulated", {root});
    EXPECT_EQ(daemon->waitForEnd(), 1);
    EXPECT_THAT(daemon->lines(), ElementsAre("VelmoPowerDaemon: must run as root (launchd)"));
    EXPECT_FALSE(std::filesystem::exists(socket));
}

TEST_F(DaemonTest, UnsignedItRefusesEveryCaller) {
    mac.update([](SimulatedMac& state) { state.team.reset(); });
    startDaemon();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(connect().call(holdCall), "");
        EXPECT_TRUE(daemon->waitForLine("unsigned daemon: refusing every caller"));
    }
    EXPECT_FALSE(sleepDisabled());
}

TEST_F(DaemonTest, APeerThatIsNotTrustedGetsNoSession) {
    startDaemon();
    const RawClient holder = connect();
    EXPECT_EQ(holder.call(holdCall), held);
    mac.update([](SimulatedMac& state) { state.trustedUsers = {}; });
    EXPECT_EQ(connect().call(releaseCall), "");
    EXPECT_EQ(holder.call(heartbeatCall), yes);
    EXPECT_TRUE(sleepDisabled());
    EXPECT_THAT(daemon->lines(), testing::IsEmpty());
}

TEST_F(DaemonTest, HostilePeersDisturbNoHoldAndGrowNoMemory) {
    startDaemon();
    const RawClient holder = connect();
    EXPECT_EQ(holder.call(holdCall), held);
    const RawClient silent = connect();
    const RawClient halfALine = connect();
    EXPECT_TRUE(halfALine.send(R"({"call":"rel)"));
    const long before = residentMemory();

    for (const std::string_view garbage : {"", "release", "{}", "\xFF\xFE", R"({"call":"hold"})"})
        EXPECT_EQ(connect().call(garbage), "") << garbage;
    const std::string longLine(1 << 20, 'x');
    for (int i = 0; i < 10; ++i) {
        const RawClient client = connect();
        client.send(longLine); // cut off somewhere on the way
        EXPECT_EQ(client.readLine(), "");
    }
    {
        std::deque<RawClient> crowd;
        for (int i = 0; i < 200; ++i)
            crowd.push_back(connect());
        for (const RawClient& client : crowd)
            EXPECT_EQ(client.call(heartbeatCall), R"({"ok":false})");
        EXPECT_EQ(crowd.back().call(holdCall), R"({"ok":false,"reason":"busy"})");
    }
    // Calls that are sent ahead are answered one by one, so that waiting replies do not fill the
    // daemon's memory.
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many.append(heartbeatCall).append("\n");
    const RawClient eager = connect();
    std::thread sender([&] { eager.send(many); });
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(eager.readLine(), R"({"ok":false})");
    sender.join();

    EXPECT_EQ(holder.call(heartbeatCall), yes);
    EXPECT_TRUE(sleepDisabled());
    // A sanitizer keeps freed memory for a while.
    const long maxGrowth = VELMO_SANITIZED != 0 ? 1 << 20 : 4096;
    EXPECT_LT(residentMemory() - before, maxGrowth);
    EXPECT_TRUE(silent);
}

TEST_F(DaemonTest, RefusesAHoldForEveryFaultOfTheMac) {
    startDaemon();

    const std::pair<std::string, std::string> cases[] = {
        {"battery", "--mains off --battery 19"},
        {"thermal", "--thermal serious"},
        {"pmset", "--pmset fails"},
        {"pmset", "--pmset dies"},
        {"pmset", "--pmset lies"},
        {"unreadable", "--pmset fails --property-unreadable on"},
        {"record", "--record-folder link"},
        {"record", "--record-folder readOnly"},
    };
    const RawClient client = connect();
    const SimulatedMac sound = mac.load().value();
    for (const auto& [reason, change] : cases) {
        EXPECT_EQ(velmoMac("set " + root + ' ' + change), 0);
        EXPECT_EQ(client.call(holdCall), R"({"ok":false,"reason":")" + reason + R"("})") << change;
        EXPECT_FALSE(sleepDisabled()) << change;
        mac.update([&](SimulatedMac& state) { state = sound; });
    }
    EXPECT_EQ(client.call(holdCall), held);
}

TEST_F(DaemonTest, AFailedRestoreIsRetriedByTheNextStart) {
    startDaemon();
    const RawClient client = connect();
    EXPECT_EQ(client.call(holdCall), held);
    mac.update([](SimulatedMac& state) { state.faults.pmset = PmsetFault::lies; });
    daemon->signal(SIGTERM);
    EXPECT_EQ(daemon->waitForEnd(), 0);
    EXPECT_THAT(daemon->lines().back(),
                "VelmoPowerDaemon: could not re-enable sleep (stopping); retrying");
    EXPECT_TRUE(sleepDisabled());

    mac.update([](SimulatedMac& state) { state.faults.pmset = PmsetFault::none; });
    startDaemon();
    EXPECT_TRUE(daemon->waitForLine("sleep enabled again (recovered)"));
    EXPECT_FALSE(sleepDisabled());
}

TEST_F(DaemonTest, RefusesToStartTwiceOnOneMac) {
    startDaemon();
    const RawClient client = connect();
    EXPECT_EQ(client.call(holdCall), held);
    const auto second = run("VelmoPowerDaemonSimulated", {root});
    EXPECT_EQ(second->waitForEnd(), 1);
    EXPECT_THAT(second->lines(),
                ElementsAre("VelmoPowerDaemonSimulated: a daemon runs already in " + root));
    EXPECT_EQ(client.call(heartbeatCall), yes);
    EXPECT_TRUE(sleepDisabled());
}

TEST_F(DaemonTest, RestoresSleepWhenATerminalSignalEndsIt) {
    for (const int signal : {SIGINT, SIGHUP}) {
        startDaemon();
        const RawClient client = connect();
        EXPECT_EQ(client.call(holdCall), held);
        daemon->signal(signal);
        EXPECT_EQ(daemon->waitForEnd(), 0);
        EXPECT_EQ(daemon->lines().back(), "VelmoPowerDaemon: sleep enabled again (stopping)");
    }
    std::filesystem::remove(socket);
    const std::string script = "trap '' INT HUP; exec " VELMO_PROGRAMS "/VelmoPowerDaemonSimulated";
    ::setenv("VELMO_MAC", root.c_str(), 1);
    daemon =
        std::make_unique<WatchedProcess>("/bin/sh", std::vector<std::string_view>{"-c", script});
    ::unsetenv("VELMO_MAC");
    ASSERT_TRUE(appears(socket));
    const RawClient client = connect();
    EXPECT_EQ(client.call(holdCall), held);
    daemon->signal(SIGINT);
    daemon->signal(SIGHUP);
    for (int i = 0; i < 200; ++i) // time enough to end, if it meant to
        ASSERT_EQ(client.call(heartbeatCall), yes);
    daemon->signal(SIGTERM);
    EXPECT_EQ(daemon->waitForEnd(), 0);
    EXPECT_FALSE(sleepDisabled());
}

TEST_F(DaemonTest, LeavesAReplacedMacAlone) {
    startDaemon();
    auto leaving = std::make_unique<RawClient>(connect());
    EXPECT_EQ(leaving->call(holdCall), held);
    const auto old = std::move(daemon);
    std::filesystem::remove_all(root);
    ASSERT_TRUE(mac.create(VELMO_PROGRAMS "/simulated-pmset"));
    startDaemon();
    const RawClient holder = connect();
    EXPECT_EQ(holder.call(holdCall), held);
    leaving.reset();
    EXPECT_EQ(old->waitForEnd(), 1);
    EXPECT_THAT(old->lines().back(), testing::HasSubstr("this Mac was removed or replaced"));
    EXPECT_TRUE(sleepDisabled());
    EXPECT_TRUE(std::filesystem::exists(mac.inside("/var/db/velmo/power-daemon.json")));
    EXPECT_EQ(holder.call(heartbeatCall), yes);
}

TEST_F(DaemonTest, ReportsAStartThatFailsInOneHelpfulLine) {
    const std::string broken = (temporary.path() / "broken").string();
    ASSERT_TRUE(MacFolder(broken).create("/nonexistent"));
    std::ofstream(broken + "/machine.json") << R"({"mains":true,"faults":{"pmset":"explodes"}})";
    const std::string deep = (temporary.path() / std::string(100, 'x')).string();
    ASSERT_TRUE(MacFolder(deep).create("/nonexistent"));
    const std::string noRun = (temporary.path() / "noRun").string();
    ASSERT_TRUE(MacFolder(noRun).create("/nonexistent"));
    std::filesystem::remove_all(noRun + "/var/run");

    const char* const daemonName = "VelmoPowerDaemonSimulated";

    struct Case {
        const char* program;
        std::vector<std::string_view> words;
        int status;
        std::string told;
    };

    const Case cases[] = {
        {"velmo-mac", {}, 2, "a verb is missing"},
        {"velmo-mac", {"frob"}, 2, "there are create, show and set"},
        {"velmo-mac", {"show"}, 2, "velmo-mac show FOLDER, or VELMO_MAC"},
        {"velmo-mac", {"show", ""}, 2, "empty name"},
        {"velmo-mac", {"show", "/nonexistent"}, 1, "velmo-mac create"},
        {"velmo-mac", {"show", broken}, 1, R"("thermal" is missing; it must be one of "nominal")"},
        {"velmo-mac", {"set", root, "--battery", "101"}, 2, "0-100|none would do"},
        {"velmo-mac", {"set", root, "--battery", "1e1"}, 2, "0-100|none would do"},
        {"velmo-mac", {"set", root, "--mains", "maybe"}, 2, "on|off would do"},
        {"velmo-mac", {"set", root, "--elapse", "-1"}, 2, "SECONDS would do"},
        {"velmo-mac", {"set", root, "--user-id", "me"}, 2, "ID would do"},
        {"velmo-mac",
         {"set", root, "--pmset", "explodes"},
         2,
         "none|fails|dies|hangs|lies would do"},
        {daemonName, {}, 2, "VELMO_MAC"},
        {daemonName, {"-x"}, 2, "unknown option '-x'"},
        {daemonName, {"a", "b"}, 2, "unexpected word 'b'"},
        {daemonName, {""}, 2, "empty name"},
        {daemonName, {broken}, 2, "\"thermal\" is missing"},
        {daemonName, {noRun}, 1, "No such file or directory"},
        {daemonName, {deep}, 2, "too long for a socket"},
        {"velmo-power", {"--mac", "", "status"}, 2, "--mac"},
    };
    for (const auto& [program, words, status, told] : cases) {
        const auto process = run(program, words);
        EXPECT_EQ(process->waitForEnd(), status) << program << testing::PrintToString(words);
        ASSERT_EQ(process->lines().size(), 1U) << program << testing::PrintToString(words);
        EXPECT_THAT(process->lines()[0], testing::HasSubstr(told));
    }
}

TEST_F(DaemonTest, RefusesAPathTooLongForASocket) {
    const std::size_t below = socket.string().size() - root.size();
    const auto moveTo = [&](std::size_t socketPath) {
        std::string path = temporary.path() / "";
        path.resize(socketPath - below, 'x');
        std::filesystem::rename(root, path);
        root = path;
        socket = MacFolder(root).socket(powerDaemonMachService);
    };
    moveTo(maxSocketPath);
    startDaemon();
    EXPECT_EQ(connect().call(heartbeatCall), R"({"ok":false})");
    daemon.reset();
    moveTo(maxSocketPath + 1);
    EXPECT_TRUE(run("VelmoPowerDaemonSimulated", {root})->waitForLine("too long for a socket"));
    EXPECT_TRUE(run("velmo-mac", {"create", root + "x"})->waitForLine("too long for a socket"));
    EXPECT_EQ(velmoPower({"status"})->waitForEnd(), 2);
    EXPECT_FALSE(connect());
}

TEST_F(DaemonTest, ClosedStandardErrorDoesNotKeepItFromRestoring) {
    startDaemon();
    const RawClient client = connect();
    EXPECT_EQ(client.call(holdCall), held);
    daemon->closeOutput();
    daemon->signal(SIGTERM);
    EXPECT_EQ(daemon->waitForEnd(), 0);
    EXPECT_FALSE(sleepDisabled());
}

TEST_F(DaemonTest, RestoresSleepThoughItsLogIsNotRead) {
    const auto log = makePipe();
    ASSERT_TRUE(log);
    const int end = log->writeEnd.get();
    ::fcntl(end, F_SETFL, O_NONBLOCK);
    const std::string some(512, '.');
    while (::write(end, some.data(), some.size()) > 0)
        ;
    ::fcntl(end, F_SETFL, 0);
    const auto pid = startChild(VELMO_PROGRAMS "/VelmoPowerDaemonSimulated",
                                std::vector<std::string_view>{root}, {end, end, end});
    ASSERT_TRUE(pid && appears(socket));
    const RawClient client = connect();
    EXPECT_EQ(client.call(holdCall), held);
    ::kill(*pid, SIGTERM);
    EXPECT_EQ(waitForChild(*pid), 0);
    EXPECT_FALSE(sleepDisabled());
}

TEST_F(DaemonTest, VelmoMacMakesAMacAndBreaksIt) {
    const std::string other = (temporary.path() / "other").string();
    EXPECT_EQ(velmoMac("show " + other), 1);
    EXPECT_EQ(velmoMac("create " + other), 0);
    EXPECT_EQ(velmoMac("create " + other), 1);
    EXPECT_EQ(velmoMac("set " + other
                       + " --mains off --battery 7 --thermal serious --clock-forward 60"
                         " --user-id 501 --team none --trusted-users 1,2 --pmset lies"
                         " --record-folder link --property-unreadable on --sleep-disabled on"),
              0);
    const SimulatedMac changed{.mains = false,
                               .battery = 7,
                               .thermal = ThermalState::serious,
                               .sleepDisabled = true,
                               .clockOffset = 60,
                               .userId = 501,
                               .team = {},
                               .trustedUsers = {1, 2},
                               .faults = {.pmset = PmsetFault::lies,
                                          .propertyUnreadable = true,
                                          .recordFolder = RecordFolderFault::link}};
    EXPECT_EQ(MacFolder(other).load(), changed);
    MacFolder(other).update(
        [](SimulatedMac& state) { state.late = {.sleepDisabled = false, .due = 0}; });
    EXPECT_EQ(velmoMac("set " + other + " --battery none"), 0);
    EXPECT_FALSE(MacFolder(other).load().value().sleepDisabled);
    EXPECT_EQ(MacFolder(other).load().value().battery, std::nullopt);
    EXPECT_EQ(MacFolder(other).load().value().faults, changed.faults);

    std::ofstream(other + "/machine.json") << "{mistyped";
    EXPECT_EQ(velmoMac("create " + other), 1);
    EXPECT_EQ(velmoMac("set " + other + " --mains on"), 1);
    EXPECT_EQ(std::filesystem::file_size(other + "/machine.json"), 9U);
    EXPECT_EQ(run("VelmoPowerDaemonSimulated", {other})->waitForEnd(), 2);
}

TEST_F(DaemonTest, IgnoresAHoldThatArrivesDuringTheLastRestore) {
    startDaemon();
    const RawClient holder = connect();
    ASSERT_EQ(holder.call(holdCall), held);
    const RawClient late = connect();
    mac.update([](SimulatedMac& state) { state.faults.pmset = PmsetFault::hangs; });
    daemon->signal(SIGTERM);
    ASSERT_TRUE(appears(mac.signOfHungPmset()));
    ASSERT_TRUE(late.send(std::string(holdCall) + "\n"));
    mac.update([](SimulatedMac& state) { state.faults.pmset = PmsetFault::none; });
    EXPECT_EQ(late.readLine(), "");
    EXPECT_EQ(daemon->waitForEnd(), 0);
    EXPECT_FALSE(sleepDisabled());
}

} // namespace
} // namespace velmo
