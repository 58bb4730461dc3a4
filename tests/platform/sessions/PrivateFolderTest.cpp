#include "platform/sessions/PrivateFolder.h"

#include "core/terminal/AttachTicket.h"
#include "lab/instruments/TemporaryFolder.h"
#include "platform/posix/Io.h"
#include "platform/posix/SocketAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class PrivateFolderTest : public testing::Test {
protected:
    PrivateFolderTest() {
        ::setenv("HOME", temporary_.path().c_str(), 1);
        fs::create_directories(fs::path(PrivateFolder::locate().value()).parent_path());
        path_ = PrivateFolder::locate().value();
    }

    [[nodiscard]] static std::string content(const std::string& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator(file), {}};
    }

    static void write(const std::string& path, std::string_view text) {
        std::ofstream(path) << text;
    }

    [[nodiscard]] static mode_t modeOf(const std::string& path) {
        struct stat status{};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }

    /// Returns why the host can't serve in the folder; "" if it can.
    [[nodiscard]] static std::string fault() {
        const auto made = PrivateFolder::make();
        return made ? "" : made.error();
    }

    TemporaryFolder temporary_;
    std::string path_;
};

TEST_F(PrivateFolderTest, MakesTheFolderPrivateOrRefusesIt) {
    for (const mode_t before : {mode_t{0}, mode_t{0777}, mode_t{0500}}) {
        ASSERT_TRUE(before == 0 || ::chmod(path_.c_str(), before) == 0);
        EXPECT_EQ(fault(), "");
        EXPECT_EQ(modeOf(path_), 0700U);
    }
    EXPECT_EQ(PrivateFolder::make()->folder(), path_);
    fs::rename(path_, temporary_.path() / "aside");
    fs::create_directory_symlink(temporary_.path() / "aside", path_);
    EXPECT_THAT(fault(), HasSubstr("can't be made"));
    fs::remove(path_);
    write(path_, "");
    EXPECT_THAT(fault(), HasSubstr("can't be made"));
}

TEST_F(PrivateFolderTest, WritesANewFileThatOnlyTheUserCanRead) {
    auto folder = PrivateFolder::make().value();
    const mode_t mask = ::umask(0777);
    EXPECT_TRUE(folder.write("a", "text"));
    ::umask(mask);
    EXPECT_EQ(modeOf(path_ + "/a"), 0600U);
    EXPECT_EQ(content(path_ + "/a"), "text");
    fs::create_symlink("aside", path_ + "/link");
    for (const char* taken : {"a", "link"})
        EXPECT_FALSE(folder.write(taken, "other")) << taken;
    EXPECT_EQ(content(path_ + "/a"), "text");
    EXPECT_FALSE(fs::exists(path_ + "/aside"));
    folder.remove("a");
    EXPECT_FALSE(fs::exists(path_ + "/a"));
    write(path_ + "/ssh-s.new", "of a host that was killed");
    for (const char* target : {"/one", "/two"}) {
        EXPECT_TRUE(folder.link("ssh-s", target));
        EXPECT_EQ(fs::read_symlink(path_ + "/ssh-s"), target);
    }
}

TEST_F(PrivateFolderTest, GivesTheLockToOneProcessAndNamesIt) {
    const auto folder = PrivateFolder::make().value();
    write(path_ + "/host.lock", "99999999999999999999");
    {
        const auto right = folder.lock();
        EXPECT_TRUE(right);
        EXPECT_EQ(content(path_ + "/host.lock"), std::to_string(::getpid()));
        EXPECT_EQ(folder.lock().error(), ::getpid());
    }
    const auto again = folder.lock();
    EXPECT_TRUE(again);
    write(path_ + "/host.lock", "nonsense");
    EXPECT_EQ(folder.lock().error(), 0);
    fs::remove(path_ + "/host.lock");
    fs::create_directory(path_ + "/host.lock");
    EXPECT_EQ(folder.lock().error(), PrivateFolder::noLock);
}

TEST_F(PrivateFolderTest, ARightEndsWithTheFolderOrItsLock) {
    const auto folder = PrivateFolder::make().value();
    const auto right = folder.lock().value();
    EXPECT_TRUE(folder.isServedBy(right));
    fs::rename(path_ + "/host.lock", path_ + "/aside");
    EXPECT_FALSE(folder.isServedBy(right));
    const auto second = folder.lock().value();
    EXPECT_FALSE(folder.isServedBy(right)) << "the lock is another's";
    EXPECT_TRUE(folder.isServedBy(second));
    fs::remove_all(path_);
    EXPECT_FALSE(folder.isServedBy(second));
    const auto anew = PrivateFolder::make().value();
    const auto third = anew.lock().value();
    EXPECT_FALSE(folder.isServedBy(third)) << "the folder that is open is another one";
    EXPECT_TRUE(anew.isServedBy(third));
    EXPECT_EQ(folder.lock().error(), PrivateFolder::noLock) << "there is no folder any more";
}

TEST_F(PrivateFolderTest, RefusesAPathThatIsTooLongForASocket) {
    const std::size_t rest = maxSocketPath - path_.size() - std::string("/control.sock.new").size();
    const fs::path home = temporary_.path() / std::string(rest - 1, 'h');
    ::setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(fault(), "");
    ::setenv("HOME", (home.string() + "h").c_str(), 1);
    EXPECT_THAT(fault(), HasSubstr("too long for the path of a socket"));
    EXPECT_FALSE(fs::exists(home.string() + "h"));
}

TEST_F(PrivateFolderTest, RemovesLeftTicketsAndNoOtherFile) {
    const auto folder = PrivateFolder::make().value();
    const std::string ticket = "a-0123456789abcdef0123456789abcdef.json";
    ASSERT_TRUE(PtyAttach::isTicketName(ticket));
    for (const std::string& name :
         {ticket, std::string("host.log"), std::string("a-b.json"), std::string("ssh-s_0")})
        write(path_ + "/" + name, "");
    folder.removeTickets();
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(path_))
        left.push_back(entry.path().filename());
    EXPECT_THAT(left, UnorderedElementsAre("host.log", "a-b.json"));
}

TEST_F(PrivateFolderTest, TheLogGoesOnWhereItEnded) {
    const auto folder = PrivateFolder::make().value();
    for (const char* line : {"one\n", "two\n"})
        EXPECT_TRUE(writeAll(folder.openLog().get(), line));
    EXPECT_EQ(content(path_ + "/host.log"), "one\ntwo\n");
}

TEST_F(PrivateFolderTest, TouchRenewsTheTimesOfEveryFile) {
    const auto folder = PrivateFolder::make().value();
    std::vector<std::string> all{path_};
    for (const char* name : {"host.lock", "host.log", "control.sock", "attach.sock"}) {
        all.push_back(path_ + "/" + name);
        write(all.back(), "");
    }
    const auto old = fs::last_write_time(path_) - std::chrono::days(30);
    for (const std::string& each : all)
        fs::last_write_time(each, old);
    folder.touch();
    for (const std::string& each : all)
        EXPECT_GT(fs::last_write_time(each), old) << each;
}

TEST_F(PrivateFolderTest, NoticesAReplacedFolder) {
    const auto folder = PrivateFolder::make().value();
    EXPECT_FALSE(folder.has("control.sock"));
    write(path_ + "/control.sock", "");
    EXPECT_TRUE(folder.has("control.sock"));
    fs::rename(path_, temporary_.path() / "aside");
    EXPECT_FALSE(folder.has("control.sock"));
    fs::create_directory(path_);
    write(path_ + "/control.sock", "");
    EXPECT_FALSE(folder.has("control.sock")) << "the folder is another one";
}

} // namespace
} // namespace velmo
