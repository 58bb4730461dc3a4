#pragma once

#include "tools/velmo-session/DetachChoice.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// The request of `velmo-session start`.
struct StartRequest {
    std::optional<std::string> folder; ///< absent: the caller's, or home where that is not allowed
    std::optional<std::string> name;
    bool attachesIfNameRuns = false; ///< to the running session of this name, if there is one
    bool isDetached = false;
    std::optional<std::string> transcript; ///< of a session that is started: a file, or absent
    DetachChoice detachChoice;
    std::vector<std::string> program; ///< with its arguments; empty: the user's log-in shell
};

/// Starts a session, and a host if none serves, and attaches to it. Returns the exit status.
int start(const StartRequest& request);

/// The request of `velmo-session attach`.
struct AttachRequest {
    std::optional<std::string> session; ///< id or name; absent: the one that runs, if only one does
    bool isViewOnly = false;
    std::optional<std::int64_t> lines; ///< of what was shown before; absent: all that is kept
    DetachChoice detachChoice;
};

/// Attaches to a session. Returns the exit status.
int attachTo(const AttachRequest& request);

} // namespace velmo
