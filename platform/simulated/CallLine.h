#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>

/// What stands on the socket of a simulated Mac in place of XPC: one JSON line a call from the
/// client, answered by one JSON line, in order.
///
///     {"batteryFloor":20,"call":"hold"}    {"ok":true,"reason":""}
///     {"call":"heartbeat"}                 {"ok":true}
///     {"call":"release"}                   {"ok":true}
namespace velmo {

enum class PowerCall { hold, heartbeat, release };

template<>
inline constexpr auto rawTexts<PowerCall> =
    std::to_array<std::string_view>({"hold", "heartbeat", "release"});

/// Longest line of either side, in bytes with its line feed.
inline constexpr std::size_t longestCallLine = 1024;

struct CallLine {
    PowerCall call = PowerCall::hold;
    std::optional<std::int64_t> batteryFloor; ///< of `hold` only, which needs it

    static constexpr auto fields =
        std::tuple{field("call", &CallLine::call), field("batteryFloor", &CallLine::batteryFloor)};
    bool operator==(const CallLine&) const = default;

    /// Absent for anything that is no call; other members are ignored.
    static std::optional<CallLine> parse(std::string_view line) {
        auto call = decodeRecord<CallLine>(line);
        if (call && call->call == PowerCall::hold && !call->batteryFloor)
            return std::nullopt;
        return call;
    }
};

struct ReplyLine {
    bool ok = false;
    std::optional<std::string> reason; ///< of `hold` only

    static constexpr auto fields =
        std::tuple{field("ok", &ReplyLine::ok), field("reason", &ReplyLine::reason)};
    bool operator==(const ReplyLine&) const = default;
};

} // namespace velmo
