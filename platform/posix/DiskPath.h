#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

/// Questions to the disk about a path. Links are followed, and a path with NUL leads nowhere.
namespace velmo::DiskPath {

/// Returns the absolute path with every link resolved, as realpath(3) does; absent if the path
/// leads nowhere.
std::optional<std::string> resolved(std::string_view path);

/// Returns the same for a path that may exist in part only: the missing pieces at its end are kept
/// as they are. Absent for a relative path, and on any error but a missing name: a loop of links, a
/// file that is used as a folder, no permission, a link that leads nowhere, a "." or ".." among the
/// missing pieces.
std::optional<std::string> resolvedAsFarAsItExists(std::string_view path);

/// Returns the result of stat(2); absent if it fails.
std::optional<struct stat> status(std::string_view path);

/// Returns the same for a link itself, as lstat(2) does.
std::optional<struct stat> linkStatus(std::string_view path);

bool isDirectory(std::string_view path);

/// Tells whether this process may execute the file that the path leads to; false for a directory.
bool isExecutable(std::string_view path);

/// Tells whether the mode lets every user write. A path that can't be examined counts as writable.
bool isWorldWritable(std::string_view path);

} // namespace velmo::DiskPath
