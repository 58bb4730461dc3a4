#include "platform/client/PlaceOnDisk.h"

#include "core/support/Text.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>

namespace velmo {

namespace {

constexpr off_t maxLogRead = 4096;

} // namespace

Installation::Place placeOnDisk(const std::string& path, uid_t owner) {
    struct stat status{};
    Installation::Place place{.path = path};
    place.exists = ::lstat(path.c_str(), &status) == 0;
    if (!place.exists)
        return place;
    place.isLink = S_ISLNK(status.st_mode);
    const bool isOthers = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    place.isSafe =
        !place.isLink && !isOthers && (status.st_uid == owner || status.st_uid == rootUser);
    return place;
}

std::optional<bool> isOnDisk(const std::string& path) {
    struct stat status{};
    if (::lstat(path.c_str(), &status) == 0)
        return true;
    return errno == ENOENT || errno == ENOTDIR ? std::optional(false) : std::nullopt;
}

std::vector<std::string> lastLines(const std::string& path, std::size_t count) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    if (!file || !isRegularFile(file.get()))
        return {};
    const off_t size = ::lseek(file.get(), 0, SEEK_END);
    ::lseek(file.get(), std::max<off_t>(0, size - maxLogRead), SEEK_SET);
    std::istringstream text(
        Text::repaired(readStart(file.get(), maxLogRead).value_or(std::string())));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(std::move(line));
    if (size > maxLogRead && !lines.empty())
        lines.erase(lines.begin()); // most likely the end of a longer one
    if (lines.size() > count)
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
    return lines;
}

} // namespace velmo
