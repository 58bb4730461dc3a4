#include "platform/posix/Folder.h"

#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace velmo {

namespace {

namespace fs = std::filesystem;

Descriptor openFolder(const fs::path& path, int moreFlags) {
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | moreFlags;
    return Descriptor(retryInterrupted([&] { return ::open(path.c_str(), flags); }));
}

/// Makes the folder and its missing parents, and waits until the drive has the folder's name. Waits
/// even if the folder exists: the process that made it may have been killed before its own wait.
bool makeFolders(const fs::path& path, mode_t mode, Disk& disk) {
    const fs::path parent = path.parent_path();
    int error = disk.makeFolder(path, mode);
    if (error == ENOENT && parent != path && makeFolders(parent, mode, disk))
        error = disk.makeFolder(path, mode);
    if (error != 0 && error != EEXIST)
        return false;
    const Descriptor above = openFolder(parent.empty() ? "." : parent, 0);
    return above && disk.synchronize(above.get());
}

} // namespace

std::optional<Folder> Folder::open(const std::string& path, Disk& disk) {
    Descriptor descriptor = openFolder(path, O_NOFOLLOW);
    if (!descriptor)
        return std::nullopt;
    return Folder(std::move(descriptor), disk);
}

std::optional<Folder> Folder::make(const std::string& path, mode_t mode, Disk& disk) {
    return makeFolders(path, mode, disk) ? open(path, disk) : std::nullopt;
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

bool Folder::hasFile(const std::string& name) const {
    struct stat status{};
    return ::fstatat(descriptor_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
           && S_ISREG(status.st_mode);
}

std::optional<std::string> Folder::read(const std::string& name, std::size_t maxSize) const {
    // O_NONBLOCK, so that a planted FIFO does not make the open wait.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const Descriptor file(
        retryInterrupted([&] { return ::openat(descriptor_.get(), name.c_str(), flags); }));
    if (!file || !isRegularFile(file.get()))
        return std::nullopt;
    return readStart(file.get(), maxSize);
}

bool Folder::replace(const std::string& name, std::string_view content, mode_t mode) const {
    const int folder = descriptor_.get();
    const std::string temporary = name + ".new";
    disk_->remove(folder, temporary); // what an earlier crash may have left
    const Descriptor file = disk_->createFile(folder, temporary, mode);
    if (!file)
        return false;
    const bool replaced = disk_->write(file.get(), content) && disk_->synchronize(file.get())
                          && disk_->rename(folder, temporary, name);
    if (!replaced) {
        remove(temporary);
        return false;
    }
    if (disk_->synchronize(folder))
        return true;
    remove(name);
    return false;
}

void Folder::remove(const std::string& name) const {
    disk_->remove(descriptor_.get(), name);
}

} // namespace velmo
