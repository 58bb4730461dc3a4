#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The emulated Mac: a folder, named by EMULATED_MAC, that contains a file for every fact below
/// "machine", a file system below "root" and the sockets that stand for Mach services below "mach".
/// A play changes the facts from outside; they are read anew each time.
namespace velmo {

/// Returns the first line of the fact's file; absent without a file or a line.
std::optional<std::string> fact(const std::string& name);

std::int64_t factOr(const std::string& name, std::int64_t otherwise);

/// Returns where a path of the Mac lies. Only paths of a Mac's own system are moved.
std::string placeOf(const std::string& path);

/// Returns the path of the socket that stands for a Mach service of the system's.
std::string socketOf(const std::string& service);

/// Returns a setting of this process, in place of what its file or launchd would give it.
std::optional<std::string> setting(const char* name);

} // namespace velmo
