#include "platform/daemon/RecordFile.h"

#include "tests/platform/posix/PowerCutDisk.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <set>

namespace velmo {
namespace {

namespace fs = std::filesystem;

constexpr PowerDaemonRecord record{.previous = true, .since = 1700000000.5};
constexpr PowerDaemonRecord older{.previous = false, .since = 1};

class RecordFileTest : public testing::Test {
protected:
    static mode_t mode(const fs::path& path) {
        struct stat status{};
        return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    static std::set<std::string> names(const fs::path& folder) {
        std::set<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder))
            result.insert(entry.path().filename());
        return result;
    }

    void put(std::string_view content) const {
        fs::create_directories(folder);
        std::ofstream(file, std::ios::binary) << content;
    }

    TemporaryFolder temporary;
    fs::path folder = temporary.path() / "db" / "velmo";
    fs::path file = folder / "power-daemon.json";
    RecordFile records{folder.string(), "power-daemon.json", ::getuid()};
};

TEST_F(RecordFileTest, IsWrittenReadAndRemoved) {
    EXPECT_FALSE(records.read());
    records.remove();
    EXPECT_TRUE(records.write(older));
    EXPECT_TRUE(records.write(record));
    EXPECT_EQ(records.read(), record);
    EXPECT_EQ(mode(folder), 0700U);
    EXPECT_EQ(mode(file), 0600U);
    EXPECT_EQ(names(folder), std::set<std::string>{"power-daemon.json"});
    records.remove();
    EXPECT_TRUE(names(folder).empty());
}

TEST_F(RecordFileTest, TakesAnExistingFolderOverAndClosesIt) {
    put("damaged");
    ::chmod(folder.c_str(), 0755);
    EXPECT_TRUE(records.write(record));
    EXPECT_EQ(mode(folder), 0700U);
    EXPECT_EQ(records.read(), record);
}

TEST_F(RecordFileTest, WritesNothingIntoAFolderOfAnotherOwner) {
    fs::create_directories(folder);
    RecordFile others(folder.string(), "power-daemon.json", ::getuid() + 1);
    EXPECT_FALSE(others.write(record));
    EXPECT_TRUE(names(folder).empty());
}

TEST_F(RecordFileTest, FollowsNoLinkToAFolder) {
    const fs::path elsewhere = temporary.path() / "elsewhere";
    fs::create_directories(elsewhere);
    fs::create_directories(folder.parent_path());
    fs::create_directory_symlink(elsewhere, folder);
    EXPECT_FALSE(records.write(record));
    std::ofstream(elsewhere / "power-daemon.json") << encodeJson(record).value();
    EXPECT_FALSE(records.read());
    records.remove();
    EXPECT_EQ(names(elsewhere).size(), 1U);
}

TEST_F(RecordFileTest, NeedsARealFolder) {
    for (const fs::path& path : {folder, folder.parent_path()}) {
        fs::remove_all(folder.parent_path());
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "a file";
        EXPECT_FALSE(records.write(record)) << path;
    }
}

TEST_F(RecordFileTest, ReadsNothingButARegularFile) {
    fs::create_directories(folder);
    const fs::path elsewhere = temporary.path() / "planted";
    std::ofstream(elsewhere) << encodeJson(record).value();
    fs::create_symlink(elsewhere, file);
    EXPECT_FALSE(records.read());
    // Writing replaces the link itself, not what it points at.
    EXPECT_TRUE(records.write(older));
    EXPECT_EQ(fs::file_size(elsewhere), encodeJson(record).value().size());

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
    return {folder.string(), "power-daemon.json", ::getuid(), disk};
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

/// Lets each call of a write fail, alone or with all after it, and hands the outcome to `check`.
template<class Check>
void forEachFailure(bool alone, const Check& check) {
    for (const MaybeRecord& before : {MaybeRecord(), MaybeRecord(older)}) {
        for (std::size_t failing = 0;; ++failing) {
            SCOPED_TRACE(std::to_string(failing) + (before ? " over another" : ""));
            PowerCutDisk disk;
            RecordFile records = storeIn(disk.path() / "velmo", disk);
            ASSERT_TRUE(!before || records.write(*before));
            disk.fail(failing, alone ? failing : PowerCutDisk::never);
            const bool written = records.write(record);
            if (failing >= disk.calls.size())
                break;
            check(disk, written, before, records.read());

            // Whatever was left half done, the next write is as good as any.
            disk.fail(PowerCutDisk::never);
            EXPECT_TRUE(records.write(record));
            disk.cutPower(
                [](const fs::path& left) { EXPECT_EQ(storeIn(left / "velmo").read(), record); });
        }
    }
}

TEST(RecordFileOnALossyDisk, ACallThatFailsIsReportedAndTheNewRecordIsNotThere) {
    forEachFailure(true, [](const PowerCutDisk& disk, bool written, const MaybeRecord& before,
                            const MaybeRecord& after) {
        const auto failed = disk.calls.begin() + static_cast<std::ptrdiff_t>(disk.failing());
        const bool isRenamed = std::find(disk.calls.begin(), failed, "rename") != failed;
        // Nothing needs to be removed before the first write.
        EXPECT_EQ(written, *failed == "remove");
        const MaybeRecord old = isRenamed ? MaybeRecord() : before;
        EXPECT_EQ(after, written ? MaybeRecord(record) : old);
        EXPECT_FALSE(fs::exists(disk.path() / "velmo" / "power-daemon.json.new"));
    });
}

TEST(RecordFileOnALossyDisk, AKilledWriterLeavesTheOldRecordOrTheNewOne) {
    forEachFailure(
        false, [](const PowerCutDisk& /*disk*/, bool /*written*/, const MaybeRecord& before,
                  const MaybeRecord& after) { EXPECT_TRUE(after == before || after == record); });
}

} // namespace
} // namespace velmo
