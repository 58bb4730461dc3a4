/// libSystem's files and descriptors (<fcntl.h>, <sys/stat.h>, <unistd.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Process.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace velmo {

namespace {

/// XNU's <sys/stat.h>, struct stat with 64-bit inodes.
struct DarwinStat {
    std::int32_t device;
    std::uint16_t mode;
    std::uint16_t links;
    std::uint64_t inode;
    std::uint32_t user;
    std::uint32_t group;
    std::int32_t specialDevice;
    timespec times[4]; ///< accessed, modified, changed, made
    std::int64_t size;
    std::int64_t blocks;
    std::int32_t blockSize;
    std::uint32_t flags;
    std::uint32_t generation;
    std::int32_t spare[5];
};

static_assert(sizeof(DarwinStat) == 144);

/// Returns the owner as the process sees it: files of the user that runs the emulator belong to the
/// user that the process believes it runs as.
std::uint32_t emulatedOwner(uid_t owner) {
    return owner == ::getuid() ? emulatedUser() : owner;
}

int fill(int result, const struct stat& status, DarwinStat* to) {
    if (keepError(result) != 0)
        return result;
    *to = {.device = static_cast<std::int32_t>(status.st_dev),
           .mode = static_cast<std::uint16_t>(status.st_mode),
           .links = static_cast<std::uint16_t>(status.st_nlink),
           .inode = status.st_ino,
           .user = emulatedOwner(status.st_uid),
           .group = status.st_gid,
           .times = {status.st_atim, status.st_mtim, status.st_ctim, status.st_ctim},
           .size = status.st_size,
           .blocks = status.st_blocks,
           .blockSize = static_cast<std::int32_t>(status.st_blksize)};
    return 0;
}

int fileStatus(int file, DarwinStat* to) {
    struct stat status{};
    return fill(::fstat(file, &status), status, to);
}

int pathStatus(const char* path, DarwinStat* to) {
    struct stat status{};
    return fill(::stat(placeOf(path).c_str(), &status), status, to);
}

int linkStatus(const char* path, DarwinStat* to) {
    struct stat status{};
    return fill(::lstat(placeOf(path).c_str(), &status), status, to);
}

constexpr int darwinNoFollow = 0x20;    // AT_SYMLINK_NOFOLLOW
constexpr int darwinCurrentFolder = -2; // AT_FDCWD

int statusIn(int folder, const char* name, DarwinStat* to, int flags) {
    struct stat status{};
    const int linuxFlags = (flags & darwinNoFollow) != 0 ? AT_SYMLINK_NOFOLLOW : 0;
    return fill(::fstatat(folder, name, &status, linuxFlags), status, to);
}

extern "C" int emulatedOpen(const char* path, int flags, const std::uint32_t* rest) {
    return keepError(::open(placeOf(path).c_str(), linuxOpenFlagsOf(flags), *rest));
}

extern "C" int emulatedOpenIn(int folder, const char* name, int flags, const std::uint32_t* rest) {
    if (folder == darwinCurrentFolder)
        return keepError(::open(placeOf(name).c_str(), linuxOpenFlagsOf(flags), *rest));
    return keepError(::openat(folder, name, linuxOpenFlagsOf(flags), *rest));
}

/// XNU's <sys/fcntl.h>; 1 to 4 are the same.
enum DarwinControl {
    setFlags = 4,
    getFlags = 3,
    getPath = 50,
    fullSynchronize = 51,
    duplicateAndClose = 67,
};

/// Writes the path of an open file, at most 1,023 bytes and a NUL.
int pathOfOpen(int file, char* to) {
    constexpr std::size_t longest = 1023;
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t size = keepError(::readlink(link.c_str(), to, longest));
    if (size < 0)
        return -1;
    to[size] = '\0';
    return 0;
}

extern "C" int emulatedControl(int file, int command, const int* rest) {
    switch (command) {
    case F_GETFD:
    case F_SETFD:
        return keepError(::fcntl(file, command, *rest));
    case getFlags: {
        const int flags = keepError(::fcntl(file, F_GETFL));
        return flags == -1 ? -1 : darwinOpenFlagsOf(flags);
    }
    case setFlags:
        return keepError(::fcntl(file, F_SETFL, linuxOpenFlagsOf(*rest)));
    case getPath: {
        char* to = nullptr;
        std::memcpy(static_cast<void*>(&to), rest, sizeof to);
        return pathOfOpen(file, to);
    }
    case fullSynchronize:
        return keepError(::fsync(file));
    case F_DUPFD:
        return keepError(::fcntl(file, F_DUPFD, *rest));
    case duplicateAndClose:
        return keepError(::fcntl(file, F_DUPFD_CLOEXEC, *rest));
    default:
        endRun("a command of fcntl that has no case: " + std::to_string(command));
    }
}

VELMO_VARIADIC(variadicOpen, 2, emulatedOpen);
VELMO_VARIADIC(variadicOpenIn, 3, emulatedOpenIn);
VELMO_VARIADIC(variadicControl, 2, emulatedControl);

int makeFolder(const char* path, std::uint16_t mode) {
    return keepError(::mkdir(placeOf(path).c_str(), mode));
}

/// XNU's <sys/dirent.h>, with 64-bit inodes.
struct DarwinEntry {
    std::uint64_t inode;
    std::uint64_t offset;
    std::uint16_t size;
    std::uint16_t nameSize;
    std::uint8_t kind;
    std::array<char, 1024> name;
};

/// A folder's entry is valid until the next one is read.
struct DarwinFolder {
    DIR* folder;
    DarwinEntry entry;
};

DarwinFolder* openFolder(const char* path) {
    DIR* const folder = ::opendir(placeOf(path).c_str());
    if (folder == nullptr) {
        *darwinErrno() = darwinErrorOf(errno);
        return nullptr;
    }
    return new DarwinFolder{.folder = folder, .entry = {}};
}

DarwinEntry* readFolder(DarwinFolder* folder) {
    const dirent* const entry = ::readdir(folder->folder);
    if (entry == nullptr)
        return nullptr;
    const std::string_view name(entry->d_name);
    folder->entry = {.inode = entry->d_ino,
                     .offset = 0,
                     .size = sizeof(DarwinEntry),
                     .nameSize = static_cast<std::uint16_t>(name.size()),
                     .kind = entry->d_type,
                     .name = {}};
    name.copy(folder->entry.name.data(), folder->entry.name.size() - 1);
    return &folder->entry;
}

int folderDescriptor(DarwinFolder* folder) {
    return ::dirfd(folder->folder);
}

int closeFolder(DarwinFolder* folder) {
    const int result = keepError(::closedir(folder->folder));
    delete folder;
    return result;
}

int access(const char* path, int mode) {
    return keepError(::access(placeOf(path).c_str(), mode));
}

int removeName(const char* path) {
    return keepError(::unlink(placeOf(path).c_str()));
}

int renameFile(const char* from, const char* to) {
    return keepError(::rename(placeOf(from).c_str(), placeOf(to).c_str()));
}

int changeMode(const char* path, std::uint16_t mode) {
    return keepError(::chmod(placeOf(path).c_str(), mode));
}

ssize_t linkTarget(const char* path, char* to, std::size_t size) {
    return keepError(::readlink(placeOf(path).c_str(), to, size));
}

/// Null times mean now; other times have no case.
int setTimes(int file, const timespec* times) {
    if (times != nullptr)
        endRun("futimens to other times than now");
    return keepError(::futimens(file, nullptr));
}

int setTimesIn(int folder, const char* name, const timespec* times, int flags) {
    if (times != nullptr)
        endRun("utimensat to other times than now");
    const int linuxFlags = (flags & darwinNoFollow) != 0 ? AT_SYMLINK_NOFOLLOW : 0;
    return keepError(::utimensat(folder, name, nullptr, linuxFlags));
}

constexpr auto shims = std::to_array<Shim>({
    {"_access", address<access>},
    {"_chdir", address<Translated<::chdir>::call>},
    {"_chmod", address<changeMode>},
    {"_closedir", address<closeFolder>},
    {"_close", address<Translated<::close>::call>},
    {"_dirfd", address<folderDescriptor>},
    {"_dup", address<Translated<::dup>::call>},
    {"_dup2", address<Translated<::dup2>::call>},
    {"_fchmod", address<Translated<::fchmod>::call>},
    {"_fcntl", address<variadicControl>},
    {"_flock", address<Translated<::flock>::call>},
    {"_fsync", address<Translated<::fsync>::call>},
    {"_ftruncate", address<Translated<::ftruncate>::call>},
    {"_futimens", address<setTimes>},
    {"_fstat", address<fileStatus>},
    {"_fstatat", address<statusIn>},
    {"_isatty", address<::isatty>},
    {"_lstat", address<linkStatus>},
    {"_mkdir", address<makeFolder>},
    {"_open", address<variadicOpen>},
    {"_openat", address<variadicOpenIn>},
    {"_opendir", address<openFolder>},
    {"_pipe", address<Translated<::pipe>::call>},
    {"_poll", address<Translated<::poll>::call>},
    {"_readdir", address<readFolder>},
    {"_read", address<Translated<::read>::call>},
    {"_readlink", address<linkTarget>},
    {"_rename", address<renameFile>},
    {"_renameat", address<Translated<::renameat>::call>},
    {"_stat", address<pathStatus>},
    {"_unlink", address<removeName>},
    {"_utimensat", address<setTimesIn>},
    {"_unlinkat", address<Translated<::unlinkat>::call>},
    {"_write", address<Translated<::write>::call>},
});

} // namespace

Shims systemFileShims() {
    return shims;
}

} // namespace velmo
