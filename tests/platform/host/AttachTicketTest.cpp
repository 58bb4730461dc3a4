#include "core/terminal/AttachTicket.h"

#include "platform/host/PtyAttachHostFileSystem.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Pipe.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <utility>

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

/// The private folder with one good ticket in it.
class AttachTicketOnDisk : public testing::Test {
protected:
    AttachTicketOnDisk() { renew(); }

    void renew() const {
        fs::remove_all(folder);
        fs::remove_all(aside);
        fs::create_directory(folder);
        ::chmod(folder.c_str(), 0700);
        std::ofstream(file) << json;
        ::chmod(file.c_str(), 0600);
    }

    /// Where the ticket was, which is put aside.
    [[nodiscard]] const fs::path& freed() const {
        fs::rename(file, aside);
        return file;
    }

    std::expected<Ticket, TicketError> read() { return readTicket(file.string(), files); }

    TemporaryFolder temporary;
    fs::path root = fs::canonical(temporary.path());
    fs::path folder = root / "velmo-term";
    fs::path file = folder / name;
    fs::path aside = root / "aside";
    Ticket ticket{.endpoint = (folder / "attach.sock").string(),
                  .token = std::string(43, 't'),
                  .session = "s_0123456789abcdef"};
    std::string json = encodeJson(ticket).value();
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
    const std::tuple<const char*, TicketError, std::function<void()>> cases[] = {
        {"a link", TicketError::open, [&] { fs::create_symlink(aside, freed()); }},
        {"a link to nothing", TicketError::open, [&] { fs::create_symlink("/none", freed()); }},
        {"a device", TicketError::open, [&] { fs::create_symlink("/dev/zero", freed()); }},
        {"a FIFO", TicketError::file, [&] { ::mkfifo(freed().c_str(), 0600); }},
        {"a folder", TicketError::file, [&] { ::mkdir(freed().c_str(), 0600); }},
        {"set-gid", TicketError::file, [&] { ::chmod(file.c_str(), 02600); }},
        {"open to others", TicketError::folder, [&] { ::chmod(folder.c_str(), 0701); }},
        {"of another", TicketError::folder, [&] { ++files.user; }},
        {"a link to the folder", TicketError::folder,
         [&] {
             fs::rename(folder, aside);
             fs::create_directory_symlink(aside, folder);
         }},
    };
    for (const auto& [what, error, plant] : cases) {
        renew();
        files.user = ::getuid();
        plant();
        EXPECT_EQ(read(), std::unexpected(error)) << what;
        EXPECT_TRUE(fs::is_symlink(file) || fs::exists(file)) << what;
    }
}

TEST_F(AttachTicketOnDisk, TheFileMustBeTheUsersOwn) {
    if (::chown(file.c_str(), ::getuid() + 1, ::getgid()) != 0)
        GTEST_SKIP() << "only root can give a file away";
    EXPECT_EQ(read(), std::unexpected(TicketError::file));
}

TEST_F(AttachTicketOnDisk, OfAHundredProcessesExactlyOneGetsIt) {
    constexpr int won = 0;
    for (int round = 0; round < 5; ++round) {
        renew();
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
    EXPECT_EQ(host.fstat(opened)->size, std::ssize(json));
    EXPECT_EQ(textOf(host.read(opened, 5).value()), json.substr(0, 5));
    EXPECT_EQ(textOf(host.read(opened, 513).value()), json.substr(5));
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
