#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// What must be true for a hold to work, as far as it can be seen from outside without changing
/// anything. What can't be seen is absent.
struct Installation {
    /// A file or folder that only the daemon's user, root on a Mac, should be able to change.
    struct Place {
        std::string path;
        bool exists = false;
        bool isLink = false;
        bool isSafe = false; ///< no link, owned by root or the daemon's user, others can't write
    };

    std::string simulatedMac{};        ///< its folder; empty for a real Mac
    std::optional<Place> daemon;       ///< the executable
    std::optional<Place> propertyList; ///< launchd's
    std::optional<bool> isEnabled;     ///< launchd may start it
    std::optional<bool> isLoaded;      ///< launchd knows it
    /// Why the daemon's signature does not satisfy the requirement that clients make; empty if it
    /// does. Absent on a simulated Mac, and if the executable is missing.
    std::optional<std::string> signatureFault;
    std::optional<Place> recordFolder;
    std::optional<bool> hasRecord;   ///< the record of a hold is on disk; absent without permission
    std::vector<std::string> logEnd; ///< the last lines of the log
    std::string logPath;
};

} // namespace velmo
