#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Returns the words by which a process was started, its own name first, in any bytes. Absent for
/// another user's process, even if root asks, and if the system does not tell, as for a process
/// that does not exist. Words far behind may be missing.
std::optional<std::vector<std::string>> argumentsOf(std::int64_t process);

/// Reads the words from what a Mac's kernel gives for KERN_PROCARGS2: their number as an `int` of
/// this machine, the path of the executable, NULs, then each word with a NUL behind it. Absent for
/// any other bytes.
std::optional<std::vector<std::string>> parseProcessArguments(std::string_view bytes);

} // namespace velmo
