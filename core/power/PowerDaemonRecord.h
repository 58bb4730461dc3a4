#pragma once

#include "core/support/Record.h"

namespace velmo {

/// What the power daemon keeps on disk while a hold is in force. After a crash the next start finds
/// it there and restores the sleep setting.
struct PowerDaemonRecord {
    bool previous = false; ///< the sleep-disabled setting before the hold
    double since = 0;      ///< when the hold began, in seconds since 1970

    static constexpr auto fields = std::tuple{field("previous", &PowerDaemonRecord::previous),
                                              field("since", &PowerDaemonRecord::since)};
    bool operator==(const PowerDaemonRecord&) const = default;
};

} // namespace velmo
