#pragma once

#include "core/support/RawText.h"

/// Why a hold is refused, and why one ends: the words that clients, logs and people read.
namespace velmo {

/// Why the power daemon refuses a hold. The text is the reason in its reply.
enum class HoldRefusal {
    busy,       ///< another client holds
    battery,    ///< the battery is below the floor, and there is no mains power
    thermal,    ///< the machine is hotter than "fair"
    unreadable, ///< the sleep setting can't be read, so it could not be put back
    record,     ///< the record could not be written, so that a crash would leave sleep disabled
    pmset,      ///< the setting could not be changed
    gone,       ///< the connection or the daemon is going away
};

template<>
inline constexpr auto rawTexts<HoldRefusal> = std::to_array<std::string_view>(
    {"busy", "battery", "thermal", "unreadable", "record", "pmset", "gone"});

/// Why the power daemon puts the sleep setting back. The text stands in its log; clients are told
/// a `HoldEnding` instead.
enum class RevertReason {
    heartbeat, ///< the holder was silent for too long
    battery,   ///< the battery fell below the floor
    thermal,   ///< the machine runs hot
    clientGone,
    released,
    stopping,  ///< the daemon was told to end
    retry,     ///< an earlier attempt had failed
    recovered, ///< an earlier run had left its record behind
};

template<>
inline constexpr auto rawTexts<RevertReason> =
    std::to_array<std::string_view>({"heartbeat", "battery", "thermal", "client gone", "released",
                                     "stopping", "retry", "recovered"});

} // namespace velmo
