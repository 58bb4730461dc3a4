#pragma once

#include "core/support/FileUrl.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

/// The two arguments by which tools are told of an application: a running one or one on disk.
namespace velmo::Args {

/// A process identifier, 1...2^31-1, in ASCII digits only; leading zeros are let pass.
std::optional<std::int32_t> pid(std::optional<std::string_view> text);

/// Whether there is a directory at the path, links followed; `DiskPath::isDirectory` of
/// platform/posix.
using IsDirectory = std::function<bool(std::string_view path)>;

/// The path of an application bundle: a directory whose name ends in ".app", in small letters and
/// without a slash behind it. A path with NUL in it, or that is not UTF-8, is refused unasked.
std::optional<FileUrl> appPath(std::optional<std::string_view> text,
                               const IsDirectory& isDirectory);

} // namespace velmo::Args
