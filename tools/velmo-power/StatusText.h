#pragma once

#include "client/HoldKeeper.h"
#include "core/power/BatteryFloor.h"
#include "core/power/HoldReport.h"
#include "core/support/Record.h"
#include "core/support/Time.h"
#include "machine/PowerMachine.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What velmo-power says to people.
namespace velmo {

enum class LidPosition { open, shut };

template<>
inline constexpr auto rawTexts<LidPosition> = std::to_array<std::string_view>({"open", "shut"});

/// What any user may read of a Mac, and what its daemon tells. In JSON it has the members of
/// `KeepAwakePowerLine`, and more.
struct PowerStatus {
    std::optional<bool> ac;            ///< on mains power; absent if the power source is unknown
    std::optional<int> battery;        ///< percent; absent without a battery
    std::string thermal;               ///< a `thermalName`
    std::optional<LidPosition> lid;    ///< absent on a Mac without a lid
    std::optional<bool> sleepDisabled; ///< absent when it can't be read
    std::optional<HoldReport> holds;   ///< absent when no daemon tells
    /// What the holder runs, as `commandText` has it; absent where it can't be read.
    std::optional<std::string> command;
    /// Why `holds` is absent, in words; for people, so that the JSON does not have it.
    std::string_view whyUntold = "the power daemon does not tell";

    static constexpr auto fields = std::tuple{constant("type", "power"),
                                              field("ac", &PowerStatus::ac),
                                              field("battery", &PowerStatus::battery),
                                              field("thermal", &PowerStatus::thermal),
                                              field("lid", &PowerStatus::lid),
                                              field("sleepDisabled", &PowerStatus::sleepDisabled),
                                              field("holds", &PowerStatus::holds),
                                              field("command", &PowerStatus::command)};
    bool operator==(const PowerStatus&) const = default;
};

/// Reads all but what the daemon tells. Without `mayRunPmset` the sleep setting is read by its
/// property alone, because `pmset -g` may be slow.
PowerStatus readStatus(PowerMachine& machine, bool mayRunPmset);

/// Returns one fact a line; `now` is for the times of day. `simulatedMac` is the folder of a
/// simulated Mac, which the first line names; empty for a real Mac.
std::string statusText(const PowerStatus& status, WallTime now, std::string_view simulatedMac = {});

/// Says that a Mac is simulated, and where: "simulated, in /tmp/mac".
std::string simulatedText(std::string_view folder);

/// Returns the command in the words by which a velmo-power was started, for people: in one line
/// without control characters, cut to `maxCommandText`. Absent if they ask for no hold with a
/// command.
std::optional<std::string> commandText(std::span<const std::string> arguments);

inline constexpr std::size_t maxCommandText = 60; ///< user-perceived characters

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
