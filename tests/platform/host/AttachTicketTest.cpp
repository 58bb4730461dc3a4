#include "core/terminal/AttachTicket.h"

#include "lab/instruments/TemporaryFolder.h"
#include "platform/host/PtyAttachHostFileSystem.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <map>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using namespace PtyAttach;

const std::string name = "a-00112233445566778899aabbccddeeff.json";

/// The real file system with a temporary folder of the test's own.
class TestFiles final : public HostFileSystem {
public:
    std::optional<std::string> userTempDir() override { return temporary; }

    std::uint32_t uid() override { return user; }

    std::string temporary;
    std::uint32_t user = ::getuid();
};

/// The private folder with one good ticket in it.
class AttachTicketOnDisk : public testing::Test {
protected:
    AttachTicketOnDisk() {
        files.temporary = temporary.path().string() + "/";
        renew();
    }

    void renew() const {
        fs::remove_all(folder);
        fs::remove_all(aside);
        fs::create_directory(folder);
        ::chmod(folder.c_str(), 0700);
        std::ofstream(file) << json;
        ::chmod(file.c_str(), 0600);
    }

    /// Moves the ticket aside and returns its former place.
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
    TestFiles files;
};

TEST_F(AttachTicketOnDisk, IsReadOnceEvenThroughALinkedFolder) {
    fs::create_directory_symlink(root, root / "link");
    EXPECT_EQ(readTicket((root / "link" / "velmo-term" / name).string(), files), ticket);
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(read(), std::unexpected(TicketError::open));
}

TEST_F(AttachTicketOnDisk, RefusesAnUnsafeFileOrFolder) {
    const struct {
        TicketError error;
        std::function<void()> plant;
    } cases[] = {
        {.error = TicketError::open, .plant = [&] { fs::create_symlink(aside, freed()); }},
        {.error = TicketError::open, .plant = [&] { fs::create_symlink("/dev/zero", freed()); }},
        {.error = TicketError::file, .plant = [&] { ::mkfifo(freed().c_str(), 0600); }},
        {.error = TicketError::file, .plant = [&] { ::mkdir(freed().c_str(), 0600); }},
        {.error = TicketError::file, .plant = [&] { ::chmod(file.c_str(), 02600); }},
        {.error = TicketError::folder, .plant = [&] { ::chmod(folder.c_str(), 0701); }},
        {.error = TicketError::folder,
         .plant =
             [&] {
                 fs::rename(folder, aside);
                 fs::create_directory_symlink(aside, folder);
             }},
        {.error = TicketError::folder, .plant = [&] { ++files.user; }},
    };

    for (const auto& [error, plant] : cases) {
        SCOPED_TRACE(message(error));
        renew();
        plant();
        EXPECT_EQ(read(), std::unexpected(error));
        EXPECT_TRUE(fs::is_symlink(file) || fs::exists(file));
    }
}

TEST_F(AttachTicketOnDisk, GoesToExactlyOneOfAHundredProcesses) {
    enum Outcome : std::uint8_t { won, late, other };

    for (int round = 0; round < 5; ++round) {
        renew();
        auto gate = makePipe().value();
        std::vector<pid_t> racers(100);
        for (pid_t& racer : racers) {
            racer = ::fork();
            if (racer == 0) {
                gate.writeEnd.reset();
                readStart(gate.readEnd.get(), 1); // ends for all at once
                const auto result = read();
                const bool isLate = result == std::unexpected(TicketError::open)
                                    || result == std::unexpected(TicketError::unlink);
                ::_exit(result == ticket ? won : isLate ? late : other);
            }
        }
        gate.writeEnd.reset();
        std::map<std::optional<int>, int> outcomes;
        for (const pid_t racer : racers)
            ++outcomes[waitForChild(racer)];
        const std::map<std::optional<int>, int> expected{{won, 1}, {late, 99}};
        ASSERT_EQ(outcomes, expected);
    }
}

TEST_F(AttachTicketOnDisk, ReportsFilesAsTheSystemDoes) {
    HostFileSystem host;
    EXPECT_EQ(host.uid(), ::getuid());
    // The Mac has a call for the temporary folder; elsewhere the home folder decides, given or not.
    ::setenv("XDG_RUNTIME_DIR", "/nowhere", 1);
    for (const char* home : {"", root.c_str()}) {
        ::setenv("HOME", home, 1);
        const std::string told = host.userTempDir().value();
        EXPECT_TRUE(told.starts_with("/") && !told.starts_with("/nowhere")) << told;
        EXPECT_NE(told, "/.velmo") << "an empty HOME is none";
    }
    const std::string told = host.userTempDir().value();
    fs::create_directory(told);
    EXPECT_EQ(expectedFolder(host), (fs::canonical(told) / "velmo-term").string());
    const int directory = host.openDirectory(folder.string()).value();
    EXPECT_EQ(host.pathOf(directory), folder.string());
    EXPECT_EQ(host.fstat(directory)->kind, FileInfo::Kind::directory);
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
