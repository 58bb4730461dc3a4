#include "tests/end_to_end/DaemonTest.h"

#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace velmo {
namespace {

/// Moves this process and its children into namespaces of their own, in which they may mount any
/// file system.
class PrivateMounts {
public:
    PrivateMounts() {
        const std::string user = std::to_string(::getuid());
        const std::string group = std::to_string(::getgid());
        entered_ = ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && put("setgroups", "deny")
                   && put("uid_map", "0 " + user + " 1") && put("gid_map", "0 " + group + " 1");
    }

    [[nodiscard]] bool entered() const { return entered_; }

private:
    static bool put(const std::string& name, const std::string& text) {
        return static_cast<bool>(std::ofstream("/proc/self/" + name) << text << std::flush);
    }

    bool entered_ = false;
};

class FullDiskTest : private PrivateMounts, public DaemonTest {
protected:
    void SetUp() override {
        std::filesystem::create_directories(folder);
        if (!entered() || !mountDisk(0))
            GTEST_SKIP() << "this system lets nobody mount a small disk";
    }

    void TearDown() override { ::umount2(folder.c_str(), MNT_DETACH); }

    [[nodiscard]] bool mountDisk(unsigned long flags) const {
        return ::mount("none", folder.c_str(), "tmpfs", flags, "size=16k,mode=0700") == 0;
    }

    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename());
        return names;
    }

    std::filesystem::path folder = mac.inside("/var/db/velmo");
};

constexpr const char* noRecord = R"({"ok":false,"reason":"record"})";

TEST_F(FullDiskTest, AHoldThatCannotBeRecordedIsRefusedAndLeavesNothing) {
    startDaemon();
    const RawClient client = connect();

    std::ofstream(folder / "filler") << std::string(1 << 20, 'x');
    EXPECT_EQ(client.call(holdCall), noRecord);
    EXPECT_FALSE(sleepDisabled());
    EXPECT_THAT(names(), testing::ElementsAre("filler"));

    ASSERT_TRUE(mountDisk(MS_REMOUNT | MS_RDONLY));
    EXPECT_EQ(client.call(holdCall), noRecord);
    EXPECT_FALSE(sleepDisabled());
    EXPECT_THAT(names(), testing::ElementsAre("filler"));

    ASSERT_TRUE(mountDisk(MS_REMOUNT));
    std::filesystem::remove(folder / "filler");
    EXPECT_EQ(client.call(holdCall), held);
    EXPECT_THAT(names(), testing::ElementsAre("power-daemon.json"));
}

TEST_F(FullDiskTest, RestoresAgainIfTheRecordCannotBeRemoved) {
    startDaemon();
    EXPECT_EQ(connect().call(holdCall), held);
    ASSERT_TRUE(mountDisk(MS_REMOUNT | MS_RDONLY));
    EXPECT_TRUE(daemon->waitForLine("sleep enabled again (client gone)"));
    EXPECT_FALSE(sleepDisabled());
    ASSERT_TRUE(mountDisk(MS_REMOUNT));
    EXPECT_TRUE(daemon->waitForLine("sleep enabled again (retry)"));
    EXPECT_THAT(names(), testing::Not(testing::Contains("power-daemon.json")));
}

} // namespace
} // namespace velmo
