#pragma once

#include <filesystem>

namespace velmo {

/// Returns the path of the running program with its links resolved, or an empty one if the system
/// does not tell. The daemon has no use for it: it starts nothing but system tools.
std::filesystem::path ownExecutable();

} // namespace velmo
