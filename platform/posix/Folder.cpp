#include "platform/posix/Folder.h"

#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <system_error>

namespace velmo {

namespace {

/// Waits until the drive itself holds what was written.
bool synchronize(int descriptor) {
#ifdef F_FULLFSYNC
    // fsync on macOS leaves the data in the drive's cache; not every file system knows the better
    // call.
    if (retryInterrupted([&] { return ::fcntl(descriptor, F_FULLFSYNC); }) == 0)
        return true;
#endif
    return retryInterrupted([&] { return ::fsync(descriptor); }) == 0;
}

bool makeFolders(const std::filesystem::path& path, mode_t mode) {
    if (::mkdir(path.c_str(), mode) == 0 || errno == EEXIST)
        return true;
    const auto parent = path.parent_path();
    if (errno != ENOENT || parent == path)
        return false;
    return makeFolders(parent, mode) && (::mkdir(path.c_str(), mode) == 0 || errno == EEXIST);
}

} // namespace

std::optional<Folder> Folder::open(const std::string& path) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    Descriptor descriptor(retryInterrupted([&] { return ::open(path.c_str(), flags); }));
    if (!descriptor)
        return std::nullopt;
    return Folder(std::move(descriptor));
}

std::optional<Folder> Folder::make(const std::string& path, mode_t mode) {
    return makeFolders(path, mode) ? open(path) : std::nullopt;
}

std::optional<uid_t> Folder::owner() const {
    struct stat status{};
    if (::fstat(descriptor_.get(), &status) != 0)
        return std::nullopt;
    return status.st_uid;
}

bool Folder::setMode(mode_t mode) const {
    return ::fchmod(descriptor_.get(), mode) == 0;
}

bool Folder::hasFile(const char* name) const {
    struct stat status{};
    return ::fstatat(descriptor_.get(), name, &status, AT_SYMLINK_NOFOLLOW) == 0
           && S_ISREG(status.st_mode);
}

std::optional<std::string> Folder::read(const char* name, std::size_t limit) const {
    // O_NONBLOCK: a planted FIFO must not make the open wait.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const Descriptor file(
        retryInterrupted([&] { return ::openat(descriptor_.get(), name, flags); }));
    if (!file || !isRegularFile(file.get()))
        return std::nullopt;
    return readToEnd(file.get(), limit);
}

bool Folder::replace(const char* name, std::string_view content, mode_t mode) const {
    const std::string temporary = std::string(name) + ".new";
    remove(temporary.c_str()); // what an earlier crash may have left
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor file(retryInterrupted(
        [&] { return ::openat(descriptor_.get(), temporary.c_str(), flags, mode); }));
    if (!file)
        return false;
    const bool replaced =
        writeAll(file.get(), content) && synchronize(file.get())
        && ::renameat(descriptor_.get(), temporary.c_str(), descriptor_.get(), name) == 0;
    if (!replaced) {
        remove(temporary.c_str());
        return false;
    }
    if (synchronize(descriptor_.get()))
        return true;
    remove(name);
    return false;
}

void Folder::remove(const char* name) const {
    ::unlinkat(descriptor_.get(), name, 0);
}

} // namespace velmo
