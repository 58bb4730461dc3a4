#include "platform/posix/Disk.h"

#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace velmo {

Disk& Disk::ofThisMachine() {
    static Disk disk;
    return disk;
}

int Disk::makeFolder(const std::string& path, mode_t mode) {
    return ::mkdir(path.c_str(), mode) == 0 ? 0 : errno;
}

Descriptor Disk::createFile(int folder, const std::string& name, mode_t mode) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    return Descriptor(
        retryInterrupted([&] { return ::openat(folder, name.c_str(), flags, mode); }));
}

bool Disk::write(int file, std::string_view content) {
    return writeAll(file, content);
}

bool Disk::synchronize(int fileOrFolder) {
#ifdef F_FULLFSYNC
    // fsync on macOS leaves the data in the drive's cache. F_FULLFSYNC does not, but some file
    // systems refuse it.
    if (retryInterrupted([&] { return ::fcntl(fileOrFolder, F_FULLFSYNC); }) == 0)
        return true;
#endif
    return retryInterrupted([&] { return ::fsync(fileOrFolder); }) == 0;
}

bool Disk::rename(int folder, const std::string& from, const std::string& to) {
    return ::renameat(folder, from.c_str(), folder, to.c_str()) == 0;
}

bool Disk::remove(int folder, const std::string& name) {
    return ::unlinkat(folder, name.c_str(), 0) == 0;
}

} // namespace velmo
