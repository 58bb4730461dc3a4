#include "platform/sessions/TranscriptDisk.h"

#include "lab/instruments/TemporaryFolder.h"
#include "platform/posix/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <string>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using Fault = TranscriptFiles::Fault;

class TranscriptDiskTest : public testing::Test {
protected:
    [[nodiscard]] std::string path(std::string_view name) const {
        return (temporary_.path() / name).string();
    }

    [[nodiscard]] std::string content(std::string_view name) const {
        std::ifstream file(path(name));
        return {std::istreambuf_iterator(file), {}};
    }

    void write(std::string_view name, std::string_view text) const {
        std::ofstream(path(name)) << text;
    }

    TemporaryFolder temporary_;
    TranscriptDisk disk_;
};

TEST_F(TranscriptDiskTest, ContinuesAFileThatOnlyItsUserMayRead) {
    write("shown", "before ");
    ASSERT_EQ(::chmod(path("shown").c_str(), 0666), 0);
    for (const char* name : {"shown", "new"}) {
        auto file = disk_.open(path(name));
        ASSERT_TRUE(file) << name;
        EXPECT_EQ((*file)->size(), content(name).size());
        EXPECT_TRUE((*file)->append(bytesOf("one")));
        EXPECT_TRUE((*file)->append(bytesOf("two")));
        EXPECT_EQ((*file)->size(), content(name).size());
        EXPECT_EQ(disk_.open(path(name)).error(), Fault::busy) << name;
        file->reset();
        EXPECT_TRUE(disk_.open(path(name))) << "another session may continue it: " << name;
        struct stat status{};
        ASSERT_EQ(::stat(path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U) << name;
    }
    EXPECT_EQ(content("shown"), "before onetwo");
    EXPECT_EQ(content("new"), "onetwo");
}

TEST_F(TranscriptDiskTest, RefusesWhatIsNoPlainFileWithoutWaitingForIt) {
    fs::create_directory(path("folder"));
    write("target", "precious");
    fs::create_symlink(path("target"), path("link"));
    fs::create_symlink(path("nowhere"), path("dangling"));
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo(path("read").c_str(), 0600), 0);
    const Descriptor reader(::open(path("read").c_str(), O_RDONLY | O_NONBLOCK));
    write("long", "");
    fs::resize_file(path("long"), Transcript::maxFile + 1);
    for (const char* name :
         {"folder", "link", "dangling", "fifo", "read", "long", "missing/file", "target/file"})
        EXPECT_EQ(disk_.open(path(name)).error(), Fault::unusable) << name;
    EXPECT_EQ(disk_.open("/dev/null").error(), Fault::unusable);
    EXPECT_EQ(content("target"), "precious");
    EXPECT_FALSE(fs::exists(path("nowhere")));
}

TEST_F(TranscriptDiskTest, TurnsToANewFileAndReplacesOnlyAFileOfNoSession) {
    auto file = disk_.open(path("shown")).value();
    for (const std::string text : {"one", "two", "three"}) {
        EXPECT_TRUE(file->append(bytesOf(text)));
        EXPECT_TRUE(file->turn());
        EXPECT_EQ(file->size(), 0U);
        EXPECT_EQ(content("shown.1"), text);
        EXPECT_EQ(content("shown"), "");
        EXPECT_EQ(disk_.open(path("shown")).error(), Fault::busy) << "the new file is locked, too";
    }
    EXPECT_TRUE(file->append(bytesOf("four")));
    fs::rename(path("shown"), path("kept"));
    EXPECT_TRUE(file->turn());
    EXPECT_EQ(content("kept"), "four") << "moved away by the user";
    EXPECT_EQ(content("shown.1"), "three");
    fs::remove(path("shown"));
    write("shown", "of the user");
    EXPECT_FALSE(file->turn());
    EXPECT_EQ(content("shown"), "of the user");
    EXPECT_EQ(content("shown.1"), "three");

    auto second = disk_.open(path("second")).value();
    const auto other = disk_.open(path("second.1")).value();
    EXPECT_FALSE(second->turn());
    auto third = disk_.open(path("third")).value();
    fs::create_directory(path("third.1"));
    EXPECT_FALSE(third->turn());
    EXPECT_TRUE(fs::exists(path("second")) && fs::exists(path("third")));
}

TEST_F(TranscriptDiskTest, SaysThatADiskIsFull) {
    auto file = disk_.open(path("shown")).value();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit little{.rlim_cur = 4, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &little), 0);
    EXPECT_TRUE(file->append(bytesOf("four")));
    EXPECT_FALSE(file->append(bytesOf("more")));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(content("shown"), "four");
}

} // namespace
} // namespace velmo
