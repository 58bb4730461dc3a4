#pragma once

#include <filesystem>

namespace velmo {

/// The file of the running program, links resolved; empty when the system does not tell. Not for
/// the daemon: it starts nothing but system tools.
std::filesystem::path ownExecutable();

} // namespace velmo
