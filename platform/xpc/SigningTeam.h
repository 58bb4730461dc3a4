#pragma once

#include <optional>
#include <string>

namespace velmo {

/// Returns the team identifier that the running process is signed with; absent if it is unsigned,
/// signed ad hoc, or the system does not tell.
std::optional<std::string> currentSigningTeam();

} // namespace velmo
