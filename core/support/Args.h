#pragma once

#include "core/support/FileUrl.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

/// Reads the two arguments by which tools are told of an application: a running one or one on disk.
namespace velmo::Args {

/// Reads a process identifier, 1...2^31-1, in ASCII digits only. Leading zeros are accepted.
std::optional<std::int32_t> pid(std::optional<std::string_view> text);

/// Tells whether there is a directory at the path, links followed: `DiskPath::isDirectory` of
/// platform/posix.
using IsDirectory = std::function<bool(std::string_view path)>;

/// Reads the path of an application bundle: a directory with a name that ends in ".app", in small
/// letters and without a slash behind it. A path with NUL in it, or that is not UTF-8, is refused
/// before the disk is asked.
std::optional<FileUrl> appPath(std::optional<std::string_view> text,
                               const IsDirectory& isDirectory);

} // namespace velmo::Args
