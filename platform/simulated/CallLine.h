#pragma once

#include "core/power/HoldReport.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The lines on the socket of a simulated Mac, which stand in place of XPC. The client sends each
/// call as one line of JSON, and the daemon replies to each with one line, in order.
///
///     {"batteryFloor":20,"call":"hold"}    {"ok":true,"reason":""}
///     {"call":"heartbeat"}                 {"ok":true}
///     {"call":"release"}                   {"ok":true}
///     {"call":"report"}                    {"ok":true,"report":{"pending":false,…}}
///
/// A client for which the daemon has no place gets one line, whatever it sends, and then loses the
/// connection:
///
///     {"ok":false,"reason":"too many clients"}
namespace velmo {

enum class PowerCall { hold, heartbeat, release, report };

template<>
inline constexpr auto rawTexts<PowerCall> =
    std::to_array<std::string_view>({"hold", "heartbeat", "release", "report"});

// Bytes, line feed included. A report may have long names in it.
inline constexpr std::size_t maxCallLine = 1024;
inline constexpr std::size_t maxReplyLine = 8192;

/// The `reason` in the line for a client that comes when all places are taken. The texts of
/// `HoldRefusal` differ from this one.
inline constexpr std::string_view tooManyClients = "too many clients";

struct CallLine {
    PowerCall call = PowerCall::hold;
    std::optional<std::int64_t> batteryFloor; ///< of `hold` only, which needs it

    static constexpr auto fields =
        std::tuple{field("call", &CallLine::call), field("batteryFloor", &CallLine::batteryFloor)};
    bool operator==(const CallLine&) const = default;

    /// Returns the call, or nothing if the line is not one. Members of other names are ignored.
    static std::optional<CallLine> parse(std::string_view line) {
        auto call = decodeRecord<CallLine>(line);
        if (call && call->call == PowerCall::hold && !call->batteryFloor)
            return std::nullopt;
        return call;
    }
};

struct ReplyLine {
    bool ok = false;
    std::optional<std::string> reason; ///< of `hold`, or `tooManyClients`
    std::optional<HoldReport> report;  ///< of `report` only

    static constexpr auto fields =
        std::tuple{field("ok", &ReplyLine::ok), field("reason", &ReplyLine::reason),
                   field("report", &ReplyLine::report)};
    bool operator==(const ReplyLine&) const = default;
};

} // namespace velmo
