#pragma once

#include "client/HoldKeeper.h"
#include "core/power/BatteryFloor.h"
#include "core/power/HoldReport.h"
#include "core/power/KeepAwakeLines.h"
#include "core/support/Time.h"
#include "machine/PowerMachine.h"

#include <optional>
#include <string>
#include <string_view>

/// What velmo-power says to people.
namespace velmo {

/// What any user may read of a Mac, and what its daemon tells.
struct PowerStatus : KeepAwakePowerLine {
    std::optional<bool> sleepDisabled; ///< absent when it can't be read
    std::optional<HoldReport> holds;   ///< absent when no daemon tells

    static constexpr auto fields = std::tuple_cat(
        KeepAwakePowerLine::fields, std::tuple{field("sleepDisabled", &PowerStatus::sleepDisabled),
                                               field("holds", &PowerStatus::holds)});
    bool operator==(const PowerStatus&) const = default;
};

/// Reads all but what the daemon tells. Without `mayRunPmset` the sleep setting is read by its
/// property alone, because `pmset -g` may be slow.
PowerStatus readStatus(PowerMachine& machine, bool mayRunPmset);

/// Returns one fact a line; `now` is for the times of day.
std::string statusText(const PowerStatus& status, WallTime now);

/// Tells whether two readings say the same to people: whether they differ in more than the age of a
/// heartbeat.
bool isSameStatus(PowerStatus a, PowerStatus b);

/// Returns the state of a hold, as a sentence without its full stop.
std::string holdText(const HoldKeeper::Status& status);

/// Names a holder: "velmo-power (4711)".
std::string holderText(const HolderReport& holder);

/// Says how a hold ended, from the text of a `HoldEnding` or a word of `HoldKeeper`.
std::string_view endingText(std::string_view how);

/// The line that stays current while the Mac is held awake: for how long, for which client if the
/// keeper rides, until when, and the state of the Mac.
struct HeldLine {
    double seconds = 0;
    BatteryFloor floor{};
    std::string riding{}; ///< the holder; empty if the hold is ours
    std::string until{};  ///< what ends the hold; empty without limits

    [[nodiscard]] std::string text(const PowerStatus& status) const;
};

} // namespace velmo
