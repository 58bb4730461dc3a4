#pragma once

#include <filesystem>

namespace velmo {

/// Returns the path of the running program with its links resolved, or an empty path if the system
/// does not tell. The daemon does not call this, since it starts only system tools.
std::filesystem::path ownExecutable();

} // namespace velmo
