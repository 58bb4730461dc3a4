#include "platform/daemon/simulated/SocketService.h"

#include "lab/instruments/GuardedMac.h"
#include "lab/instruments/RawClient.h"
#include "lab/instruments/TemporaryFolder.h"
#include "platform/simulated/CallLine.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace velmo {
namespace {

constexpr std::string_view heartbeat = R"({"call":"heartbeat"})";
constexpr std::string_view no = R"({"ok":false})";

/// A service with two places, its clients and the guard, run step by step on one thread.
class SocketServiceTest : public testing::Test {
protected:
    SocketServiceTest() {
        EXPECT_TRUE(folder.create("/nonexistent/pmset"));
        EXPECT_FALSE(service.listen("service", mac.guard));
    }

    RawClient connect() { return RawClient(folder.socket("service")); }

    void settle() {
        do
            mac.queue.runAll();
        while (context.poll() > 0);
    }

    /// Returns the reply, or "" if the service ends the connection instead.
    std::string call(const RawClient& client, std::string_view line) {
        EXPECT_TRUE(client.send(std::string(line) + "\n"));
        settle();
        return client.readLine();
    }

    TemporaryFolder temporary;
    MacFolder folder{temporary.path() / "mac"};
    GuardedMac mac;
    asio::io_context context;
    SocketService service{context, folder, 2};
};

TEST_F(SocketServiceTest, RefusesOneClientTooManyUntilAnotherLeaves) {
    const RawClient first = connect();
    EXPECT_EQ(call(first, heartbeat), no);
    for (int i = 0; i < 3; ++i) {
        const RawClient second = connect();
        EXPECT_EQ(call(second, heartbeat), no);
        const RawClient third = connect();
        EXPECT_EQ(call(third, heartbeat), R"({"ok":false,"reason":"too many clients"})");
        EXPECT_EQ(third.readLine(), "");
        EXPECT_EQ(call(first, heartbeat), no);
    }
}

TEST_F(SocketServiceTest, TellsWhichProcessHolds) {
    const RawClient holder = connect();
    EXPECT_EQ(call(holder, R"({"call":"hold","batteryFloor":30})"), R"({"ok":true,"reason":""})");
    const auto told = decodeRecord<ReplyLine>(call(connect(), R"({"call":"report"})"));
    ASSERT_TRUE(told && told->ok && told->report && told->report->holder);
    EXPECT_EQ(told->report->holder->processId, ::getpid());
    EXPECT_EQ(told->report->holder->program, "platform_tests");
}

TEST_F(SocketServiceTest, TheLongestReportFitsIntoALine) {
    // The name of the program and the end are of bytes that take six characters each in JSON, and
    // as long as the system and the end's file allow.
    const HoldEnd end{.how = std::string(1024, '\1'), .at = -1.0 / 3};
    const ReplyLine longest{
        .ok = false,
        .reason = {},
        .report = HoldReport{.holder = HolderReport{.processId = INT64_MIN,
                                                    .program = std::string(NAME_MAX, '\1'),
                                                    .since = -1.0 / 3,
                                                    .batteryFloor = 95,
                                                    .heartbeatAge = -1.0 / 3},
                             .sleepDisabled = false,
                             .lastEnd = end}};
    EXPECT_LE(encodeJson(longest)->size() + 1, maxReplyLine);
}

TEST_F(SocketServiceTest, DropsUntrustedPeersAndInvalidCalls) {
    for (const std::string& line :
         {std::string("{}"), std::string(R"({"call":"hold"})"), std::string(1024, ' ') + "{}"})
        EXPECT_EQ(call(connect(), line), "") << line;
    folder.update([](SimulatedMac& state) { state.trustedUsers = {}; });
    EXPECT_EQ(call(connect(), heartbeat), "");
    folder.update([](SimulatedMac& state) { state.trustedUsers = {::getuid()}; });
    EXPECT_EQ(call(connect(), heartbeat), no);
}

} // namespace
} // namespace velmo
