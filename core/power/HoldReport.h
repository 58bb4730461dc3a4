#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the power daemon tells about its holds, in one JSON line: the holder, and how an earlier
/// hold ended. The report informs people; rules don't read it.
namespace velmo {

/// How a hold ended. The text stands in a `HoldReport`.
enum class HoldEnding {
    released,          ///< by its holder
    releasedByAnother, ///< by another client
    clientGone,        ///< the holder's connection ended
    heartbeat,         ///< the holder was silent for too long
    battery,           ///< the battery fell below the floor, or a renewal was refused for it
    thermal,           ///< the machine ran hot, or a renewal was refused for it
    stopping,          ///< the daemon was told to end
    crashed,           ///< the daemon died during the hold, and the next one found its record
};

template<>
inline constexpr auto rawTexts<HoldEnding> =
    std::to_array<std::string_view>({"released", "released by another", "client gone", "heartbeat",
                                     "battery", "thermal", "stopping", "crashed"});

/// The end of a hold.
struct HoldEnd {
    std::string how; ///< the text of a `HoldEnding`; a newer daemon may have others
    double at = 0;   ///< when, in seconds since 1970

    static constexpr auto fields =
        std::tuple{field("how", &HoldEnd::how), field("at", &HoldEnd::at)};
    bool operator==(const HoldEnd&) const = default;
};

/// The hold in force.
struct HolderReport {
    std::optional<std::int64_t> processId; ///< absent where the system does not tell
    std::optional<std::string> program;    ///< the file name of its executable; likewise
    double since = 0;                      ///< when the hold began, in seconds since 1970
    std::int64_t batteryFloor = 0;         ///< percent
    double heartbeatAge = 0;               ///< seconds since its last hold or heartbeat
    bool isCaller = false;                 ///< the holder is the connection that asks

    static constexpr auto fields = std::tuple{field("processId", &HolderReport::processId),
                                              field("program", &HolderReport::program),
                                              field("since", &HolderReport::since),
                                              field("batteryFloor", &HolderReport::batteryFloor),
                                              field("heartbeatAge", &HolderReport::heartbeatAge),
                                              field("isCaller", &HolderReport::isCaller)};
    bool operator==(const HolderReport&) const = default;
};

struct HoldReport {
    std::optional<HolderReport> holder; ///< absent without a hold
    bool pending = false;               ///< sleep could not be enabled again yet
    std::optional<bool> sleepDisabled;  ///< the setting as read; absent where it can't be read
    bool recordIsUnreadable = false;    ///< a record exists that can't be read or decoded
    std::optional<HoldEnd> ownEnd;      ///< of the last hold of the connection that asks
    std::optional<HoldEnd> lastEnd;     ///< of the last hold of any client; outlives the daemon

    static constexpr auto fields =
        std::tuple{field("holder", &HoldReport::holder),
                   field("pending", &HoldReport::pending),
                   field("sleepDisabled", &HoldReport::sleepDisabled),
                   field("recordIsUnreadable", &HoldReport::recordIsUnreadable),
                   field("ownEnd", &HoldReport::ownEnd),
                   field("lastEnd", &HoldReport::lastEnd)};
    bool operator==(const HoldReport&) const = default;
};

} // namespace velmo
