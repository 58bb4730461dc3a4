#include "platform/simulated/CallLine.h"
#include "tests/end_to_end/DaemonTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <random>

namespace velmo {
namespace {

/// Tests what the next daemon makes of the files that a killed daemon left, damaged and unfinished
/// ones among them.
class RecoveryTest : public DaemonTest {
protected:
    /// Leaves a hold in force and its daemon killed.
    void leaveAHoldBehind() {
        startDaemon();
        ASSERT_EQ(connect().call(holdCall), held);
        daemon->killGroup();
    }

    /// Holds, sends a heartbeat and releases. Returns false if the daemon goes away meanwhile.
    [[nodiscard]] bool holdOnce() const {
        const RawClient peer = connect();
        peer.call(holdCall);
        peer.call(heartbeatCall);
        return !peer.call(releaseCall).empty();
    }

    /// Returns how long a whole hold takes on this machine, 7.5 ms at least.
    [[nodiscard]] int microsecondsOfAHold() const {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(holdOnce());
        const std::chrono::duration<double, std::micro> taken =
            std::chrono::steady_clock::now() - start;
        return std::max(7500, static_cast<int>(taken.count()));
    }

    [[nodiscard]] std::string recordText() const {
        std::ifstream file(record, std::ios::binary);
        return {std::istreambuf_iterator(file), {}};
    }

    void putRecord(std::string_view text) const { std::ofstream(record, std::ios::binary) << text; }

    std::filesystem::path folder = mac.inside("/var/db/velmo");
    std::filesystem::path record = folder / "power-daemon.json";
};

TEST_F(RecoveryTest, ReportsACrashInTheNextTwoRuns) {
    leaveAHoldBehind();
    for (int i = 0; i < 2; ++i) {
        startDaemon();
        const auto told = decodeRecord<ReplyLine>(connect().call(R"({"call":"report"})"));
        ASSERT_TRUE(told && told->report && told->report->lastEnd);
        EXPECT_EQ(told->report->lastEnd->how, "crashed");
        EXPECT_FALSE(told->report->holder || told->report->pending);
        daemon->signal(SIGTERM);
        EXPECT_EQ(daemon->waitForEnd(), 0);
    }
}

TEST_F(RecoveryTest, KilledAtAnyInstantItRestores) {
    std::mt19937 random(20261121);
    int interrupted = 0;
    startDaemon();
    std::uniform_int_distribution<> microseconds(0, 2 * microsecondsOfAHold());
    for (int round = 0; round < 300; ++round) {
        std::atomic<bool> busy = true;
        std::thread client([&] {
            while (busy && holdOnce()) {
            }
        });
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        daemon->killGroup();
        busy = false;
        client.join();
        interrupted += std::filesystem::exists(record) ? 1 : 0;
        startDaemon();
        ASSERT_FALSE(sleepDisabled()) << "round " << round;
        ASSERT_FALSE(std::filesystem::exists(record)) << "round " << round;
    }
    EXPECT_GT(interrupted, 0) << "no kill ever met a hold";
}

TEST_F(RecoveryTest, ADamagedRecordDoesNoHarm) {
    leaveAHoldBehind();
    const std::string whole = recordText();
    std::vector<std::string> damaged;
    for (std::size_t length = 0; length < whole.size(); ++length)
        damaged.push_back(whole.substr(0, length));
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int flipped : {0x01, 0x20, 0x80}) {
            damaged.push_back(whole);
            damaged.back()[at] = static_cast<char>(whole[at] ^ flipped);
        }
    }
    for (const std::string& text : damaged) {
        putRecord(text);
        startDaemon();
        // Either the text still is a record of the same setting, or the daemon touches neither the
        // file nor the Mac.
        if (sleepDisabled())
            ASSERT_EQ(recordText(), text);
        else
            ASSERT_FALSE(std::filesystem::exists(record)) << text;
        ASSERT_EQ(connect().call(heartbeatCall), R"({"ok":false})") << text;
        daemon->killGroup();
        mac.update([](SimulatedMac& state) { state.sleepDisabled = true; });
    }
    putRecord(whole);
    startDaemon();
    EXPECT_FALSE(sleepDisabled());
}

TEST_F(RecoveryTest, IgnoresAndRemovesAnUnfinishedRecord) {
    leaveAHoldBehind();
    mac.update([](SimulatedMac& state) { state.sleepDisabled = false; });
    std::filesystem::rename(record, record.string() + ".new");
    startDaemon();
    EXPECT_THAT(daemon->lines(), testing::IsEmpty());
    const RawClient client = connect();
    EXPECT_EQ(client.call(holdCall), held);
    EXPECT_FALSE(std::filesystem::exists(record.string() + ".new"));
    EXPECT_EQ(client.call(R"({"call":"release"})"), yes);
    EXPECT_FALSE(std::filesystem::exists(record));
}

} // namespace
} // namespace velmo
