#pragma once

#include "core/terminal/DevTerminal.h"

/// The checks of the terminal launcher that look at the real disk.
namespace velmo::DevTerminal {

/// For `parseOpen`.
std::optional<std::string> resolveOnDisk(std::string_view path);

/// The allowed-folder rule for paths as given: see DevTerminal.h.
bool isAllowedFolder(std::string_view path, std::string_view home);

/// Whether a safe path leads to an executable file of root's or the caller's, which nobody else
/// could have put there: neither it nor any folder above it is world-writable, along the path as
/// given and along the resolved one.
bool isTrustedExecutable(std::string_view path);

/// True also for what can't be examined.
bool isWorldWritable(std::string_view path);

/// The file of the running program, links resolved; absent when it is gone.
std::optional<std::string> ownExecutable();

} // namespace velmo::DevTerminal
