#include "platform/host/PtyAttachHostFileSystem.h"

#include "platform/posix/DiskPath.h"
#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#ifndef __APPLE__
#    include <filesystem>
#    include <system_error>
#endif

namespace velmo::PtyAttach {

namespace {

FileInfo::Kind kindOf(mode_t mode) {
    if (S_ISREG(mode))
        return FileInfo::Kind::regular;
    if (S_ISDIR(mode))
        return FileInfo::Kind::directory;
    return S_ISLNK(mode) ? FileInfo::Kind::symlink : FileInfo::Kind::other;
}

std::expected<int, OpenError> openAt(int directory, std::string_view name, int flags) {
    if (name.contains('\0'))
        return std::unexpected(OpenError{EINVAL});
    const std::string path(name);
    const int descriptor = retryInterrupted(
        [&] { return ::openat(directory, path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC); });
    if (descriptor < 0)
        return std::unexpected(OpenError{errno});
    return descriptor;
}

} // namespace

std::uint32_t HostFileSystem::uid() {
    return ::getuid();
}

std::optional<std::string> HostFileSystem::realpath(std::string_view path) {
    return DiskPath::resolved(path);
}

std::expected<int, OpenError> HostFileSystem::openDirectory(std::string_view path) {
    return openAt(AT_FDCWD, path, O_RDONLY | O_DIRECTORY);
}

std::expected<int, OpenError> HostFileSystem::open(std::string_view name, int directory) {
    return openAt(directory, name, O_RDONLY | O_NONBLOCK);
}

std::optional<FileInfo> HostFileSystem::fstat(int descriptor) {
    struct stat status{};
    if (::fstat(descriptor, &status) != 0)
        return std::nullopt;
    return FileInfo{.kind = kindOf(status.st_mode),
                    .uid = status.st_uid,
                    .mode = static_cast<std::uint16_t>(status.st_mode),
                    .size = status.st_size};
}

std::optional<std::string> HostFileSystem::pathOf(int descriptor) {
#ifdef __APPLE__
    std::array<char, PATH_MAX> path{};
    if (::fcntl(descriptor, F_GETPATH, path.data()) != 0)
        return std::nullopt;
    return path.data();
#else
    std::error_code error;
    const auto path =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
    return error ? std::nullopt : std::optional(path.string());
#endif
}

std::optional<Bytes> HostFileSystem::read(int descriptor, std::size_t max) {
    return readStart(descriptor, max).transform([](const std::string& content) {
        const ByteView bytes = bytesOf(content);
        return Bytes(bytes.begin(), bytes.end());
    });
}

void HostFileSystem::close(int descriptor) {
    ::close(descriptor);
}

bool HostFileSystem::unlink(std::string_view name, int directory) {
    return !name.contains('\0') && ::unlinkat(directory, std::string(name).c_str(), 0) == 0;
}

} // namespace velmo::PtyAttach
