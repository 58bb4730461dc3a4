#pragma once

#include "core/power/BatteryFloor.h"
#include "core/power/KeepAwakeLines.h"

#include "client/HoldKeeper.h"
#include "machine/PowerMachine.h"

#include <optional>
#include <string>
#include <string_view>

/// What velmo-power says to people.
namespace velmo {

/// What anyone may read of a Mac without asking the daemon.
struct PowerStatus : KeepAwakePowerLine {
    std::optional<bool> sleepDisabled; ///< absent when it can't be read

    static constexpr auto fields =
        std::tuple_cat(KeepAwakePowerLine::fields,
                       std::tuple{field("sleepDisabled", &PowerStatus::sleepDisabled)});
    bool operator==(const PowerStatus&) const = default;
};

PowerStatus readStatus(PowerMachine& machine);

/// Returns five lines, one fact each.
std::string statusText(const PowerStatus& status);

/// Returns where a hold stands, as a sentence without its full stop.
std::string holdText(const HoldKeeper::Status& status);

/// Returns the one line that stays current while a hold is in force, of fewer than 80 columns.
std::string heldLine(double heldSeconds, BatteryFloor floor, const PowerStatus& status);

} // namespace velmo
