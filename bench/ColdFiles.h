#pragma once

#include <string>

namespace velmo::bench {

/// Drops what the system keeps of a file's content in memory, so that the next read comes from the
/// disk. Does nothing on a file system that lives in memory, or on a system without such a call.
void forgetContent(const std::string& path);

} // namespace velmo::bench
