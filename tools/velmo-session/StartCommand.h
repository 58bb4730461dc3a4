#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// The request of `velmo-session start`.
struct StartRequest {
    std::optional<std::string> folder; ///< absent: the caller's, or home where that is not allowed
    std::optional<std::string> name;
    bool isDetached = false;
    std::vector<std::string> program; ///< with its arguments; empty: the user's log-in shell
};

/// Starts a session, and a host if none serves, and attaches to it. Returns the exit status.
int start(const StartRequest& request);

/// The request of `velmo-session attach`.
struct AttachRequest {
    std::optional<std::string> session; ///< id or name; absent: the one that runs, if only one does
    bool isViewOnly = false;
};

/// Attaches to a session. Returns the exit status.
int attachTo(const AttachRequest& request);

} // namespace velmo
