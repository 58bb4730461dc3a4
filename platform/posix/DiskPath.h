#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

/// What the disk says about a path. Links are followed; a path with NUL in it leads nowhere.
namespace velmo::DiskPath {

/// realpath(3): absolute, every link resolved; absent when the path leads nowhere.
std::optional<std::string> resolved(std::string_view path);

/// The same for a path whose end need not exist: what is missing is kept as it stands. Absent for
/// a relative path, and on any error but a missing name: a loop, a file that is used as a folder,
/// no permission, a link that leads nowhere, a "." or ".." below what exists.
std::optional<std::string> resolvedAsFarAsItExists(std::string_view path);

std::optional<struct stat> status(std::string_view path);

/// The same of a link itself.
std::optional<struct stat> linkStatus(std::string_view path);

bool isDirectory(std::string_view path);

/// Exists, is no directory, and this process may execute it.
bool isExecutable(std::string_view path);

/// Whether the mode lets others write; true also when there is no telling.
bool isWorldWritable(std::string_view path);

} // namespace velmo::DiskPath
