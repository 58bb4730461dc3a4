#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// Describes a running process as the platform does, to be compared with an `AppTarget`.
struct AppProcess {
    std::optional<std::string> bundleId;
    std::optional<std::string> bundlePath;
    std::optional<std::int64_t> startTime; ///< in the unit of `AppTarget::startedText`
};

} // namespace velmo
