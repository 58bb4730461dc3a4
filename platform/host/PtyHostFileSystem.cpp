#include "platform/host/PtyHostFileSystem.h"

#include "platform/posix/DiskPath.h"

#include <pwd.h>
#include <unistd.h>

#include <vector>

namespace velmo::Pty {

namespace {

/// Returns the home folder that the user database names.
std::optional<std::string> homeOfUser(uid_t user) {
    constexpr std::size_t maxSpace = 65536; // bytes, far beyond any entry
    passwd entry{};
    passwd* found = nullptr;
    for (std::vector<char> space(1024); space.size() <= maxSpace; space.resize(space.size() * 2)) {
        const int error = ::getpwuid_r(user, &entry, space.data(), space.size(), &found);
        if (error == ERANGE)
            continue;
        if (error != 0 || found == nullptr || entry.pw_dir == nullptr)
            break;
        return entry.pw_dir;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> HostFileSystem::realpath(std::string_view path) const {
    return DiskPath::resolved(path);
}

bool HostFileSystem::isDirectory(std::string_view path) const {
    return DiskPath::isDirectory(path);
}

bool HostFileSystem::isExecutable(std::string_view path) const {
    return DiskPath::isExecutable(path);
}

bool HostFileSystem::isWorldWritable(std::string_view path) const {
    return DiskPath::isWorldWritable(path);
}

std::optional<std::string> HostFileSystem::home(const Environment& environment) const {
    const auto given = environment.find("HOME");
    return given == environment.end() ? homeOfUser(::getuid()) : given->second;
}

bool isExecutableFile(std::string_view path) {
    return DiskPath::isExecutable(path);
}

bool isDirectory(std::string_view path) {
    return DiskPath::isDirectory(path);
}

} // namespace velmo::Pty
