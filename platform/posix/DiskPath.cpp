#include "platform/posix/DiskPath.h"

#include "core/support/PathText.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace velmo::DiskPath {

namespace {

/// Returns the path for a C function; absent if it contains NUL, which would cut it short there.
std::optional<std::string> terminated(std::string_view path) {
    if (path.contains('\0'))
        return std::nullopt;
    return std::string(path);
}

std::optional<struct stat> statusBy(int (*ask)(const char*, struct stat*), std::string_view path) {
    const auto name = terminated(path);
    struct stat found{};
    if (!name || ask(name->c_str(), &found) != 0)
        return std::nullopt;
    return found;
}

/// Tells whether the name is free, even of a link that leads nowhere.
bool isMissing(const std::string& path) {
    struct stat ignored{};
    return ::lstat(path.c_str(), &ignored) != 0 && errno == ENOENT;
}

} // namespace

std::optional<std::string> resolved(std::string_view path) {
    const auto name = terminated(path);
    if (!name)
        return std::nullopt;
    const std::unique_ptr<char, decltype(&std::free)> found(::realpath(name->c_str(), nullptr),
                                                            &std::free);
    return found == nullptr ? std::nullopt : std::optional<std::string>(found.get());
}

std::optional<std::string> resolvedAsFarAsItExists(std::string_view path) {
    if (!path.starts_with('/') || path.contains('\0'))
        return std::nullopt;
    // The pieces are resolved from the root downwards, up to the first name that is missing.
    std::string result = "/";
    bool exists = true;
    for (const std::string_view piece : PathText::pieces(path)) {
        const std::string next = PathText::join(result, piece);
        if (exists) {
            if (auto real = resolved(next)) {
                result = *std::move(real);
                continue;
            }
            if (!isMissing(next))
                return std::nullopt;
            exists = false;
        }
        if (PathText::isDotOrDotDot(piece))
            return std::nullopt;
        result = next;
    }
    return result;
}

std::optional<struct stat> status(std::string_view path) {
    return statusBy(::stat, path);
}

std::optional<struct stat> linkStatus(std::string_view path) {
    return statusBy(::lstat, path);
}

bool isDirectory(std::string_view path) {
    const auto found = status(path);
    return found && S_ISDIR(found->st_mode);
}

bool isExecutable(std::string_view path) {
    const auto found = status(path);
    return found && !S_ISDIR(found->st_mode) && ::access(std::string(path).c_str(), X_OK) == 0;
}

bool isWorldWritable(std::string_view path) {
    const auto found = status(path);
    return !found || (found->st_mode & S_IWOTH) != 0;
}

} // namespace velmo::DiskPath
