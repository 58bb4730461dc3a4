#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Returns the file name of the program that a process runs, for people to read: whoever starts a
/// program chooses its name. Absent if the system does not tell, as when there is no such process.
std::optional<std::string> programNameOf(std::int64_t process);

} // namespace velmo
