#pragma once

#include "core/terminal/DevTerminal.h"

/// Makes those checks of the terminal launcher that look at the real disk.
namespace velmo::DevTerminal {

/// Returns the path with its links resolved as far as it exists, as `parseOpen` asks for it.
std::optional<std::string> resolveOnDisk(std::string_view path);

/// Applies the rule for allowed folders (DevTerminal.h) to paths as given.
bool isAllowedFolder(std::string_view path, std::string_view home);

/// Tells whether a safe path leads to an executable file that belongs to root or the current user
/// and that no other user could have put there. Neither the file nor any folder above it may be
/// world-writable, along the path as given and along the resolved one.
bool isTrustedExecutable(std::string_view path);

/// Tells whether every user may write there. What can't be examined counts as writable.
bool isWorldWritable(std::string_view path);

/// Returns the path of the running program with its links resolved; absent if the file is gone.
std::optional<std::string> ownExecutable();

} // namespace velmo::DevTerminal
