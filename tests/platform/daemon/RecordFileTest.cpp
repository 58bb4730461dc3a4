#include "platform/daemon/RecordFile.h"

#include "lab/instruments/TemporaryFolder.h"
#include "tests/platform/posix/PowerCutDisk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;

constexpr PowerDaemonRecord record{.previous = true, .since = 1700000000.5};
constexpr PowerDaemonRecord older{.previous = false, .since = 1};
const std::string name = "power-daemon.json";

class RecordFileTest : public testing::Test {
protected:
    void put(std::string_view content) const {
        fs::create_directories(folder);
        std::ofstream(file, std::ios::binary) << content;
    }

    TemporaryFolder temporary;
    fs::path folder = temporary.path() / "db" / "velmo";
    fs::path file = folder / name;
    RecordFile records{folder.string(), name, ::getuid()};
};

TEST_F(RecordFileTest, WritesAndRemovesTheRecordInAPrivateFolder) {
    EXPECT_FALSE(records.read());
    put("damaged");
    EXPECT_TRUE(records.write(older));
    EXPECT_TRUE(records.write(record));
    EXPECT_EQ(records.read(), record);
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms{0700});
    EXPECT_EQ(fs::status(file).permissions(), fs::perms{0600});
    records.remove();
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(RecordFileTest, WritesNothingIntoAFolderOfAnotherOwner) {
    fs::create_directories(folder);
    EXPECT_FALSE(RecordFile(folder.string(), name, ::getuid() + 1).write(record));
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(RecordFileTest, FollowsNoLinkToAFolder) {
    const fs::path elsewhere = temporary.path() / "elsewhere";
    fs::create_directories(elsewhere);
    fs::create_directories(folder.parent_path());
    fs::create_directory_symlink(elsewhere, folder);
    EXPECT_FALSE(records.write(record));
    EXPECT_TRUE(fs::is_empty(elsewhere));
    put(encodeJson(record).value());
    EXPECT_FALSE(records.read());
    records.remove();
    EXPECT_TRUE(fs::exists(elsewhere / name));
}

TEST_F(RecordFileTest, ReadsNothingButARegularFile) {
    fs::create_directories(folder);
    RecordFile planted(temporary.path().string(), "planted", ::getuid());
    ASSERT_TRUE(planted.write(record));
    fs::create_symlink(temporary.path() / "planted", file);
    EXPECT_FALSE(records.read());
    // Writing replaces the link itself, not what it points at.
    EXPECT_TRUE(records.write(older));
    EXPECT_EQ(planted.read(), record);

    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(records.read());
}

TEST_F(RecordFileTest, KeepsTheLastEndBesideTheRecord) {
    const HoldEnd end{.how = "released by another", .at = 1700000000.5};
    const fs::path endFile = folder / "power-daemon-last.json";
    records.writeLastEnd(end); // where there never was a record
    EXPECT_FALSE(fs::exists(folder));
    ASSERT_TRUE(records.write(record));
    const fs::path elsewhere = temporary.path() / "elsewhere";
    std::ofstream(elsewhere) << *encodeJson(end);
    fs::create_symlink(elsewhere, endFile);
    EXPECT_FALSE(records.readLastEnd());
    records.writeLastEnd({.how = "battery", .at = 1});
    records.writeLastEnd(end);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(endFile)));
    EXPECT_EQ(fs::status(endFile).permissions(), fs::perms{0600});
    EXPECT_EQ(records.readLastEnd(), end);
    EXPECT_EQ(records.read(), record);
    for (const std::string& damaged : {std::string(), std::string(R"({"how":1,"at":2})"),
                                       *encodeJson(end) + std::string(1024, ' ')}) {
        std::ofstream(endFile, std::ios::binary) << damaged;
        EXPECT_FALSE(records.readLastEnd()) << damaged;
    }
    RecordFile(folder.string(), name, ::getuid() + 1).writeLastEnd(end);
    EXPECT_FALSE(records.readLastEnd());
}

TEST_F(RecordFileTest, ARecordThatIsThereAndCannotBeReadIsNotedAsSuch) {
    EXPECT_FALSE(records.isUnreadable());
    put("damaged");
    EXPECT_TRUE(records.isUnreadable());
    EXPECT_TRUE(records.write(record));
    EXPECT_FALSE(records.isUnreadable());
    records.remove();
    EXPECT_FALSE(records.isUnreadable());
}

TEST_F(RecordFileTest, ACutOrOversizedRecordIsNotRead) {
    const std::string whole = encodeJson(record).value();
    put(whole.substr(0, whole.size() - 1));
    EXPECT_FALSE(records.read());
    put(whole + std::string(65536 - whole.size(), ' '));
    EXPECT_EQ(records.read(), record);
    put(whole + std::string(65537 - whole.size(), ' '));
    EXPECT_FALSE(records.read());
    EXPECT_TRUE(records.write(older)); // it is not ours, and would stay for ever
    EXPECT_EQ(records.read(), older);
}

RecordFile storeIn(const fs::path& folder, Disk& disk = Disk::ofThisMachine()) {
    return {folder.string(), name, ::getuid(), disk};
}

using MaybeRecord = std::optional<PowerDaemonRecord>;

/// Makes one call of a write fail, or that call and all later ones as after a kill or a power cut,
/// and then writes again. Returns false if the write has fewer calls.
bool tryWithAFailure(std::size_t failing, bool isCut, const MaybeRecord& before) {
    PowerCutDisk disk;
    const fs::path folder = disk.path() / "velmo";
    RecordFile records = storeIn(folder, disk);
    EXPECT_TRUE(!before || records.write(*before));
    disk.fail(failing, isCut ? PowerCutDisk::never : failing);
    const bool written = records.write(record);
    if (failing >= disk.calls.size())
        return false;
    if (isCut) {
        const auto expectOldOrNew = [&](const fs::path& left) {
            const auto read = storeIn(left / "velmo").read();
            EXPECT_TRUE(read == before || read == record) << "cut at call " << failing;
        };
        expectOldOrNew(disk.path());
        disk.cutPower(expectOldOrNew);
    } else {
        // A failing "remove" does not matter, because no earlier crash has left a file to remove.
        EXPECT_EQ(written, disk.calls[failing] == "remove");
        const bool isRenamed = failing > 0 && disk.calls[failing - 1] == "rename";
        const MaybeRecord old = isRenamed ? MaybeRecord() : before;
        EXPECT_EQ(records.read(), written ? MaybeRecord(record) : old);
        EXPECT_FALSE(fs::exists(folder / (name + ".new")));
    }
    disk.fail(PowerCutDisk::never);
    EXPECT_TRUE(records.write(record));
    disk.cutPower([](const fs::path& left) { EXPECT_EQ(storeIn(left / "velmo").read(), record); });
    return true;
}

TEST(RecordFileOnALossyDisk, APowerCutLeavesTheOldRecordOrTheNew) {
    for (const bool isCut : {true, false}) {
        for (const MaybeRecord& before : {MaybeRecord(), MaybeRecord(older)}) {
            std::size_t failing = 0;
            while (tryWithAFailure(failing, isCut, before))
                ++failing;
            EXPECT_GT(failing, 6U) << "calls that were let fail";
        }
    }
}

TEST(RecordFileOnALossyDisk, TheFoldersMadeForItSurviveAPowerCutToo) {
    PowerCutDisk disk;
    EXPECT_TRUE(storeIn(disk.path() / "db" / "velmo", disk).write(record));
    disk.cutPower(
        [](const fs::path& left) { EXPECT_EQ(storeIn(left / "db" / "velmo").read(), record); });
}

} // namespace
} // namespace velmo
