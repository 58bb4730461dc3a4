#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Returns the file name of the program that a process runs. The name is only for people to read,
/// since the user who starts a program may choose it. Absent if the system does not tell, such as
/// for a process that does not exist.
std::optional<std::string> programNameOf(std::int64_t process);

} // namespace velmo
