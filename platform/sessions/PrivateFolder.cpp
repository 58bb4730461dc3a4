#include "platform/sessions/PrivateFolder.h"

#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/terminal/AttachTicket.h"
#include "platform/host/PtyAttachHostFileSystem.h"
#include "platform/posix/DiskPath.h"
#include "platform/posix/Folder.h"
#include "platform/posix/Io.h"
#include "platform/posix/SocketAddress.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <vector>

namespace velmo {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;
constexpr std::size_t maxLockText = 32; // bytes

/// The longest name in the folder that a socket ever has, while it is made.
constexpr std::string_view longestSocket = "control.sock.new";

Descriptor openAt(int folder, const std::string& name, int flags) {
    return Descriptor(retryInterrupted([&] {
        return ::openat(folder, name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK,
                        fileMode);
    }));
}

} // namespace

std::optional<std::string> PrivateFolder::locate() {
    PtyAttach::HostFileSystem files;
    const auto above = files.userTempDir();
    if (!above || above->empty())
        return std::nullopt;
    return PathText::join(DiskPath::resolved(*above).value_or(*above), PtyAttach::folderName);
}

std::expected<PrivateFolder, std::string> PrivateFolder::make() {
    const auto path = locate();
    if (!path)
        return std::unexpected("there is no folder for files of yours alone");
    if (path->size() + 1 + longestSocket.size() > maxSocketPath)
        return std::unexpected(*path + " is too long for the path of a socket, of which a system "
                               + "has " + std::to_string(maxSocketPath) + " bytes");
    const auto folder = Folder::make(*path, folderMode);
    if (!folder)
        return std::unexpected(*path + " can't be made");
    if (folder->owner() != ::getuid())
        return std::unexpected(*path + " belongs to somebody else");
    if (!folder->setMode(folderMode))
        return std::unexpected(*path + " can't be closed to others");
    Descriptor descriptor = openAt(AT_FDCWD, *path, O_RDONLY | O_DIRECTORY);
    struct stat status{};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || status.st_uid != ::getuid()
        || (status.st_mode & 077) != 0)
        return std::unexpected(*path + " is not private");
    return PrivateFolder(DiskPath::resolved(*path).value_or(*path), std::move(descriptor));
}

bool PrivateFolder::write(const std::string& name, std::string_view content) {
    const Descriptor file = openAt(descriptor_.get(), name, O_WRONLY | O_CREAT | O_EXCL);
    if (!file)
        return false;
    const bool written = ::fchmod(file.get(), fileMode) == 0 && writeAll(file.get(), content);
    if (!written)
        remove(name);
    return written;
}

bool PrivateFolder::link(const std::string& name, const std::string& target) {
    const std::string unready = name + ".new";
    remove(unready);
    return ::symlinkat(target.c_str(), descriptor_.get(), unready.c_str()) == 0
           && ::renameat(descriptor_.get(), unready.c_str(), descriptor_.get(), name.c_str()) == 0;
}

void PrivateFolder::remove(const std::string& name) {
    ::unlinkat(descriptor_.get(), name.c_str(), 0);
}

std::expected<Descriptor, pid_t> PrivateFolder::lock() const {
    Descriptor file = openAt(descriptor_.get(), lockFile, O_RDWR | O_CREAT);
    if (!file)
        return std::unexpected(noLock);
    if (retryInterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) != 0) {
        const auto text = readStart(file.get(), maxLockText);
        return std::unexpected(Decimal::parseUnsigned<pid_t>(text.value_or("")).value_or(0));
    }
    if (!isServedBy(file)) // the folder or its lock was removed just now
        return std::unexpected(0);
    ::ftruncate(file.get(), 0) == 0 && writeAll(file.get(), std::to_string(::getpid()));
    return file;
}

bool PrivateFolder::isServedBy(const Descriptor& right) const {
    struct stat status{};
    const auto byPath = DiskPath::linkStatus(path(lockFile));
    return byPath && has(lockFile) && ::fstat(right.get(), &status) == 0
           && status.st_ino == byPath->st_ino && status.st_dev == byPath->st_dev;
}

void PrivateFolder::removeTickets() const {
    std::error_code error;
    std::vector<std::string> tickets;
    for (const auto& entry : std::filesystem::directory_iterator(path_, error)) {
        const std::string name = entry.path().filename().string();
        if (PtyAttach::isTicketName(name) || name.starts_with(agentLinkPrefix))
            tickets.push_back(name);
    }
    for (const std::string& ticket : tickets)
        ::unlinkat(descriptor_.get(), ticket.c_str(), 0);
}

Descriptor PrivateFolder::openLog() const {
    return openAt(descriptor_.get(), logFile, O_WRONLY | O_CREAT | O_APPEND);
}

void PrivateFolder::touch() const {
    ::futimens(descriptor_.get(), nullptr);
    for (const char* name : {lockFile, logFile, controlSocket, PtyAttach::socketName.data()})
        ::utimensat(descriptor_.get(), name, nullptr, AT_SYMLINK_NOFOLLOW);
}

bool PrivateFolder::has(const std::string& name) const {
    struct stat here{};
    const auto byPath = DiskPath::linkStatus(path(name));
    return byPath && ::fstatat(descriptor_.get(), name.c_str(), &here, AT_SYMLINK_NOFOLLOW) == 0
           && here.st_ino == byPath->st_ino && here.st_dev == byPath->st_dev;
}

std::string PrivateFolder::path(std::string_view name) const {
    return PathText::join(path_, name);
}

} // namespace velmo
