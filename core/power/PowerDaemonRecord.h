#pragma once

#include "core/support/Record.h"

namespace velmo {

/// What the power daemon keeps on disk while a hold is in force, so that its next start can put
/// the sleep setting back after a crash.
struct PowerDaemonRecord {
    bool previous = false; ///< whether sleep was disabled before the daemon changed anything
    double since = 0;      ///< when the hold began, in seconds since 1970

    static constexpr auto fields = std::tuple{field("previous", &PowerDaemonRecord::previous),
                                              field("since", &PowerDaemonRecord::since)};
    bool operator==(const PowerDaemonRecord&) const = default;
};

} // namespace velmo
