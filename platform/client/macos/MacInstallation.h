#pragma once

#include "platform/client/Installation.h"

#include <optional>
#include <string>

namespace velmo {

/// Looks at how the daemon is installed on this Mac, with launchctl and codesign. `root` is put
/// before every path, and is empty except in tests.
Installation examineMac(const std::optional<std::string>& daemonRequirement,
                        const std::string& root = {});

} // namespace velmo
