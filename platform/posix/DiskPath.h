#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

/// Asks the disk about a path. Links are followed; a path with NUL in it leads nowhere.
namespace velmo::DiskPath {

/// Returns the absolute path with every link resolved, as realpath(3) does; absent if the path
/// leads nowhere.
std::optional<std::string> resolved(std::string_view path);

/// Returns the same for a path whose end need not exist: what is missing is kept as it stands.
/// Absent for a relative path, and on any error but a missing name: a loop of links, a file that is
/// used as a folder, no permission, a link that leads nowhere, a "." or ".." below what exists.
std::optional<std::string> resolvedAsFarAsItExists(std::string_view path);

/// Returns what stat(2) tells; absent if it tells nothing.
std::optional<struct stat> status(std::string_view path);

/// Returns the same of a link itself, as lstat(2) does.
std::optional<struct stat> linkStatus(std::string_view path);

bool isDirectory(std::string_view path);

/// Tells whether the file exists, is no directory, and may be executed by this process.
bool isExecutable(std::string_view path);

/// Tells whether the mode lets everybody write. What can't be examined counts as writable.
bool isWorldWritable(std::string_view path);

} // namespace velmo::DiskPath
