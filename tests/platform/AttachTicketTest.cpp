#include "core/terminal/AttachTicket.h"

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/PtyAttachHostFileSystem.h"
#include "tests/platform/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <utility>
#include <vector>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using namespace PtyAttach;

const std::string name = "a-00112233445566778899aabbccddeeff.json";

/// The real file system with a temporary folder of the test's own.
class TestFiles final : public HostFileSystem {
public:
    explicit TestFiles(std::string temporary) : temporary_(std::move(temporary)) {}

    std::optional<std::string> userTempDir() override { return temporary_; }

    std::uint32_t uid() override { return user; }

    std::uint32_t user = ::getuid();

private:
    std::string temporary_;
};

class AttachTicketOnDisk : public testing::Test {
protected:
    AttachTicketOnDisk() {
        fs::create_directory(folder);
        ::chmod(folder.c_str(), 0700);
        write(json(ticket));
    }

    static std::string json(const Ticket& from) {
        return R"({"v":1,"endpoint":")" + from.endpoint + R"(","token":")" + from.token
               + R"(","session":")" + from.session + "\"}";
    }

    void write(std::string_view content, mode_t mode = 0600) const {
        fs::remove(file);
        std::ofstream(file, std::ios::binary) << content;
        ::chmod(file.c_str(), mode);
    }

    std::expected<Ticket, TicketError> read() { return readTicket(file.string(), files); }

    TemporaryFolder temporary;
    fs::path root = fs::canonical(temporary.path());
    fs::path folder = root / "velmo-term";
    fs::path file = folder / name;
    Ticket ticket{.endpoint = (folder / "attach.sock").string(),
                  .token = std::string(43, 't'),
                  .session = "s_0123456789abcdef"};
    TestFiles files{temporary.path().string() + "/"};
};

TEST_F(AttachTicketOnDisk, IsReadOnce) {
    EXPECT_EQ(read(), ticket);
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(read(), std::unexpected(TicketError::open));
}

TEST_F(AttachTicketOnDisk, MayBeReachedThroughALinkAbove) {
    fs::create_directory_symlink(root, root / "link");
    EXPECT_EQ(readTicket((root / "link" / "velmo-term" / name).string(), files), ticket);
}

TEST_F(AttachTicketOnDisk, NothingElseIsBelieved) {
    struct Case {
        const char* what;
        TicketError error;
        std::function<void()> plant;
    };

    const fs::path aside = root / "aside";
    Ticket foreign = ticket;
    foreign.endpoint = (aside / "attach.sock").string();
    const Case cases[] = {
        {"readable by the group", TicketError::file, [&] { write(json(ticket), 0640); }},
        {"read-only", TicketError::file, [&] { write(json(ticket), 0400); }},
        {"set-gid", TicketError::file, [&] { write(json(ticket), 02600); }},
        {"empty", TicketError::file, [&] { write(""); }},
        {"513 bytes", TicketError::file,
         [&] { write(json(ticket) + std::string(513 - json(ticket).size(), ' ')); }},
        {"no JSON", TicketError::json, [&] { write("{"); }},
        {"foreign endpoint", TicketError::endpoint, [&] { write(json(foreign)); }},
        {"a link", TicketError::open,
         [&] {
             write(json(ticket));
             fs::rename(file, aside);
             fs::create_symlink(aside, file);
         }},
        {"a link that leads nowhere", TicketError::open, [&] { fs::create_symlink(aside, file); }},
        {"a FIFO", TicketError::file, [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); }},
        {"a folder", TicketError::file,
         [&] {
             fs::create_directory(file);
             ::chmod(file.c_str(), 0600);
         }},
        {"a device", TicketError::open, [&] { fs::create_symlink("/dev/zero", file); }},
    };
    for (const auto& [what, error, plant] : cases) {
        fs::remove(file);
        plant();
        EXPECT_EQ(read(), std::unexpected(error)) << what;
        EXPECT_TRUE(fs::is_symlink(file) || fs::exists(file)) << what;
        fs::remove_all(file);
        fs::remove_all(aside);
    }
}

TEST_F(AttachTicketOnDisk, ALongestTicketIsStillOne) {
    write(json(ticket) + std::string(512 - json(ticket).size(), '\n'));
    EXPECT_EQ(read(), ticket);
}

TEST_F(AttachTicketOnDisk, TheFolderMustBePrivate) {
    for (const mode_t mode : {0710U, 0701U, 0750U, 0777U}) {
        ::chmod(folder.c_str(), mode);
        EXPECT_EQ(read(), std::unexpected(TicketError::folder)) << std::oct << mode;
    }
    ::chmod(folder.c_str(), 0700);
    ++files.user;
    EXPECT_EQ(read(), std::unexpected(TicketError::folder));
    --files.user;

    fs::rename(folder, root / "real");
    EXPECT_EQ(read(), std::unexpected(TicketError::folder));
    fs::create_directory_symlink(root / "real", folder);
    EXPECT_EQ(read(), std::unexpected(TicketError::folder));
    EXPECT_EQ(readTicket((root / "real" / name).string(), files),
              std::unexpected(TicketError::folder));
}

TEST_F(AttachTicketOnDisk, TheFileMustBeTheUsersOwn) {
    if (::chown(file.c_str(), ::getuid() + 1, ::getgid()) != 0)
        GTEST_SKIP() << "only root can give a file away";
    EXPECT_EQ(read(), std::unexpected(TicketError::file));
}

TEST_F(AttachTicketOnDisk, WhatCannotBeRemovedIsNotGiven) {
    if (::getuid() == 0)
        GTEST_SKIP() << "root may remove anything";
    ::chmod(folder.c_str(), 0500);
    EXPECT_EQ(read(), std::unexpected(TicketError::unlink));
    ::chmod(folder.c_str(), 0700);
}

TEST_F(AttachTicketOnDisk, OfAHundredProcessesExactlyOneGetsIt) {
    constexpr int won = 0;
    for (int round = 0; round < 5; ++round) {
        write(json(ticket));
        auto gate = makePipe().value();
        std::vector<pid_t> racers(100);
        for (pid_t& racer : racers) {
            racer = ::fork();
            if (racer == 0) {
                gate.writeEnd.reset();
                char opened = 0;
                static_cast<void>(::read(gate.readEnd.get(), &opened, 1)); // ends for all at once
                const auto result = read();
                ::_exit(result == ticket ? won : 1 + static_cast<int>(result.error()));
            }
        }
        gate.writeEnd.reset();
        int winners = 0;
        for (const pid_t racer : racers) {
            const auto status = waitForChild(racer);
            winners += status == won ? 1 : 0;
            EXPECT_THAT(status, testing::AnyOf(won, 1 + std::to_underlying(TicketError::open),
                                               1 + std::to_underlying(TicketError::unlink)));
        }
        ASSERT_EQ(winners, 1);
    }
}

TEST_F(AttachTicketOnDisk, EveryDescriptorIsClosed) {
    // The lowest free number is the same before and after, whatever happened between.
    const auto lowest = [] {
        const int descriptor = ::dup(STDERR_FILENO);
        ::close(descriptor);
        return descriptor;
    };
    const int before = lowest();
    EXPECT_TRUE(read());
    EXPECT_FALSE(read());
    write("{}");
    EXPECT_FALSE(read());
    write("", 0644);
    EXPECT_FALSE(read());
    ::chmod(folder.c_str(), 0755);
    EXPECT_FALSE(read());
    EXPECT_EQ(lowest(), before);
}

TEST_F(AttachTicketOnDisk, TheHostFileSystemTellsTheTruth) {
    HostFileSystem host;
    EXPECT_EQ(host.uid(), ::getuid());
    // Not everywhere asked, but where it is not there is a better answer.
    ::setenv("TMPDIR", root.parent_path().c_str(), 1);
    const auto told = host.userTempDir();
    ASSERT_TRUE(told);
    EXPECT_EQ(expectedFolder(host), (fs::canonical(*told) / "velmo-term").string());
    const int directory = host.openDirectory(folder.string()).value();
    EXPECT_EQ(host.pathOf(directory), folder.string());
    const auto info = host.fstat(directory).value();
    EXPECT_EQ(info.kind, FileInfo::Kind::directory);
    EXPECT_EQ(info.mode & 07777, 0700);

    const int opened = host.open(name, directory).value();
    const auto whole = json(ticket);
    EXPECT_EQ(host.fstat(opened)->size, static_cast<std::int64_t>(whole.size()));
    EXPECT_EQ(textOf(host.read(opened, 5).value()), whole.substr(0, 5));
    EXPECT_EQ(textOf(host.read(opened, 513).value()), whole.substr(5));
    EXPECT_EQ(host.read(opened, 1)->size(), 0U);
    EXPECT_FALSE(host.read(directory, 1));
    host.close(opened);
    EXPECT_FALSE(host.fstat(opened));

    EXPECT_EQ(host.openDirectory(file.string()).error(), OpenError{ENOTDIR});
    EXPECT_EQ(host.open("missing", directory).error(), OpenError{ENOENT});
    EXPECT_FALSE(host.open(name + std::string("\0", 1), directory));
    EXPECT_FALSE(host.unlink(name + std::string("\0", 1), directory));
    EXPECT_TRUE(host.unlink(name, directory));
    EXPECT_FALSE(host.unlink(name, directory));
    host.close(directory);
}

} // namespace
} // namespace velmo
