#pragma once

#include "core/power/BatteryFloor.h"
#include "tools/command-line/CommandLine.h"
#include "tools/velmo-power/HoldLimits.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The command line of velmo-power.
namespace velmo {

extern const CommandLine::Program powerCommandLine;

namespace PowerVerb {

inline constexpr std::string_view hold = "hold";
inline constexpr std::string_view release = "release";
inline constexpr std::string_view status = "status";
inline constexpr std::string_view doctor = "doctor";

} // namespace PowerVerb

/// What `velmo-power hold` is asked for.
struct HoldRequest {
    BatteryFloor floor = 20;
    HoldLimits limits{};
    bool displayOff = false;
    bool rides = true;
    bool runsAnyway = false;
    bool persists = false;
    bool endsCommandOnLoss = false;
    bool inBackground = false;
    bool isQuiet = false;
    std::optional<int> readyDescriptor{}; ///< tells the process in front of the hold
    std::vector<std::string> command{};   ///< the program and its arguments; empty: none

    /// Reads the options. The error is one line that says what is wrong and what is accepted.
    static std::expected<HoldRequest, std::string> from(const CommandLine::Line& line,
                                                        WallTime now);
};

} // namespace velmo
