#include "platform/daemon/RecordFile.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <set>

namespace velmo {
namespace {

namespace fs = std::filesystem;

constexpr PowerDaemonRecord record{.previous = true, .since = 1700000000.5};

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
    EXPECT_TRUE(records.write({.previous = false, .since = 1}));
    EXPECT_TRUE(records.write(record));
    EXPECT_EQ(records.read(), record);
    EXPECT_EQ(mode(folder), 0700U);
    EXPECT_EQ(mode(file), 0600U);
    EXPECT_EQ(names(folder), std::set<std::string>{"power-daemon.json"});
    records.remove();
    EXPECT_FALSE(records.read());
    EXPECT_TRUE(names(folder).empty());
}

TEST_F(RecordFileTest, TakesAnExistingFolderOverAndClosesIt) {
    fs::create_directories(folder);
    ::chmod(folder.c_str(), 0755);
    put("damaged");
    std::ofstream(file.string() + ".new") << "left by a crash";
    EXPECT_TRUE(records.write(record));
    EXPECT_EQ(mode(folder), 0700U);
    EXPECT_EQ(names(folder), std::set<std::string>{"power-daemon.json"});
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
    fs::create_directories(folder.parent_path());
    std::ofstream(folder) << "a file";
    EXPECT_FALSE(records.write(record));
    fs::remove(folder);
    fs::remove(folder.parent_path());
    std::ofstream(folder.parent_path()) << "a file";
    EXPECT_FALSE(records.write(record));
}

TEST_F(RecordFileTest, ReadsNothingButARegularFile) {
    fs::create_directories(folder);
    const fs::path elsewhere = temporary.path() / "planted";
    std::ofstream(elsewhere) << encodeJson(record).value();
    fs::create_symlink(elsewhere, file);
    EXPECT_FALSE(records.read());
    // Writing replaces the link itself, not what it points at.
    EXPECT_TRUE(records.write({.previous = false, .since = 2}));
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
    put(whole + std::string(65536, ' '));
    EXPECT_FALSE(records.read());
    // What can't be read is not written over: it may tell what the setting was.
    EXPECT_FALSE(records.write(record));
    EXPECT_GT(fs::file_size(file), 65536U);
    put(whole + "\n");
    EXPECT_EQ(records.read(), record);
}

} // namespace
} // namespace velmo
