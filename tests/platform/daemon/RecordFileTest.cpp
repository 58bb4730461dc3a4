#include "platform/daemon/RecordFile.h"

#include "tests/platform/posix/PowerCutDisk.h"

#include "lab/instruments/TemporaryFolder.h"
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

TEST_F(RecordFileTest, IsWrittenReadAndRemovedInAFolderThatItCloses) {
    EXPECT_FALSE(records.read());
    records.remove();
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
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_FALSE(records.read());
    EXPECT_FALSE(records.write(record));
}

TEST_F(RecordFileTest, ACutOrOversizedRecordIsNotRead) {
    const std::string whole = encodeJson(record).value();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        put(whole.substr(0, length));
        EXPECT_FALSE(records.read()) << length;
    }
    put(whole + std::string(65536 - whole.size(), ' '));
    EXPECT_EQ(records.read(), record);
    put(whole + std::string(65537 - whole.size(), ' '));
    EXPECT_FALSE(records.read());
    // What can't be read is not written over: it may tell what the setting was.
    EXPECT_FALSE(records.write(older));
    EXPECT_EQ(fs::file_size(file), 65537U);
}

RecordFile storeIn(const fs::path& folder, Disk& disk = Disk::ofThisMachine()) {
    return {folder.string(), name, ::getuid(), disk};
}

using MaybeRecord = std::optional<PowerDaemonRecord>;

TEST(RecordFileOnALossyDisk, APowerCutAtAnyMomentLeavesTheOldRecordOrTheNewOne) {
    for (const MaybeRecord& before : {MaybeRecord(), MaybeRecord(older)}) {
        bool written = false;
        for (std::size_t done = 0; !written; ++done) {
            PowerCutDisk disk;
            RecordFile records = storeIn(disk.path() / "db" / "velmo", disk);
            ASSERT_TRUE(!before || records.write(*before));
            disk.fail(done);
            written = records.write(record);
            ASSERT_LT(done, 100U);
            disk.cutPower([&](const fs::path& left) {
                const auto read = storeIn(left / "db" / "velmo").read();
                EXPECT_TRUE(read == record || (!written && read == before))
                    << "after " << done << " calls, of which the last is " << disk.calls.back();
            });
        }
    }
}

/// Lets one call of a write fail, or that one and all after it as if the writer were killed, and
/// then writes again. Returns false if the write has no call of that number.
bool tryWithAFailure(std::size_t failing, bool isKilled, const MaybeRecord& before) {
    PowerCutDisk disk;
    const fs::path folder = disk.path() / "velmo";
    RecordFile records = storeIn(folder, disk);
    EXPECT_TRUE(!before || records.write(*before));
    disk.fail(failing, isKilled ? PowerCutDisk::never : failing);
    const bool written = records.write(record);
    if (failing >= disk.calls.size())
        return false;
    const auto read = records.read();
    if (isKilled) {
        EXPECT_TRUE(read == before || read == record);
    } else {
        const bool isRenamed = failing > 0 && disk.calls[failing - 1] == "rename";
        const MaybeRecord old = isRenamed ? MaybeRecord() : before;
        // There is nothing that an earlier crash has left and that needs to be removed.
        EXPECT_EQ(written, disk.calls[failing] == "remove");
        EXPECT_EQ(read, written ? MaybeRecord(record) : old);
        EXPECT_FALSE(fs::exists(folder / (name + ".new")));
    }
    disk.fail(PowerCutDisk::never);
    EXPECT_TRUE(records.write(record));
    disk.cutPower([](const fs::path& left) { EXPECT_EQ(storeIn(left / "velmo").read(), record); });
    return true;
}

TEST(RecordFileOnALossyDisk, AWriteThatFailsIsReportedAndDoesNoHarmToTheNext) {
    for (const bool isKilled : {false, true}) {
        for (const MaybeRecord& before : {MaybeRecord(), MaybeRecord(older)}) {
            std::size_t failing = 0;
            while (tryWithAFailure(failing, isKilled, before) && !HasFailure())
                ++failing;
            EXPECT_GT(failing, 6U) << "calls that were let fail, killed: " << isKilled;
        }
    }
}

} // namespace
} // namespace velmo
