#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// What must be true for a hold to work, as far as it can be seen from outside without changing
/// anything. Whatever can't be seen is absent.
struct Installation {
    /// A file or folder that only root may change, as far as that is asked.
    struct Place {
        std::string path;
        bool exists = false;
        bool isLink = false;
        bool isSafe = false; ///< belongs to whoever the daemon runs as, and nobody else may write
    };

    std::optional<Place> daemon;       ///< the executable
    std::optional<Place> propertyList; ///< launchd's
    std::optional<bool> isEnabled;     ///< launchd may start it
    std::optional<bool> isLoaded;      ///< launchd knows it, or somebody listens
    /// Why the daemon's signature does not satisfy the requirement that clients make; empty if it
    /// does. Absent where there are no signatures.
    std::optional<std::string> signatureFault;
    std::optional<Place> recordFolder;
    std::vector<std::string> logEnd; ///< the last lines of the log
    std::string logPath;
};

} // namespace velmo
