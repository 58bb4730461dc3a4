#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The emulated Mac: a folder, named by EMULATED_MAC, that holds one file a fact below "machine", a
/// file system below "root" and the sockets that stand for Mach services below "mach". Whoever
/// plays with the Mac changes the facts; they are read anew each time.
namespace velmo {

/// The first line of the fact's file; absent if there is none.
std::optional<std::string> fact(const std::string& name);

std::int64_t factOr(const std::string& name, std::int64_t otherwise);

/// Where a path of the Mac lies. Only what belongs to a Mac's own system is moved.
std::string placeOf(const std::string& path);

/// The socket that stands for a Mach service of the system's.
std::string socketOf(const std::string& service);

/// A setting of this process, which stands for what its file or launchd would give it.
std::optional<std::string> setting(const char* name);

} // namespace velmo
