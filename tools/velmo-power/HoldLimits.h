#pragma once

#include "core/support/Time.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// When `velmo-power hold` gives a hold up by itself.
namespace velmo {

/// The limits of one hold, in any combination; the first that is reached ends the hold.
struct HoldLimits {
    std::optional<double> seconds;       ///< after so long
    std::optional<WallTime> until;       ///< at this moment
    std::optional<std::int64_t> process; ///< when this process ends
    bool onlyOnMains = false;            ///< when the Mac is unplugged
    bool untilLidOpens = false;          ///< when the lid, once it has been shut, opens

    bool operator==(const HoldLimits&) const = default;

    [[nodiscard]] bool any() const { return *this != HoldLimits(); }
};

/// Reads "2h30m", "90s", "1d" or a plain number of seconds: whole numbers with the units d, h, m
/// and s. Absent for anything else, for 0 and for an empty text, and beyond 3650 days.
std::optional<double> parseDuration(std::string_view text);

/// Reads "17:00" or "7:05" as minutes after midnight; absent for anything else.
std::optional<int> parseTimeOfDay(std::string_view text);

/// Returns the next moment of that time of the day, by the clock and the time zone of the system.
WallTime nextTimeOfDay(int minutes, WallTime now);

/// Watches the limits of one hold.
class LimitWatch {
public:
    struct Facts {
        SteadyTime now;
        WallTime date;
        std::optional<bool> onMains; ///< absent counts as mains, as in the daemon
        std::optional<bool> lidIsShut;
        bool processHasEnded = false;
    };

    LimitWatch(HoldLimits limits, SteadyTime begin) : limits_(limits), begin_(begin) {}

    /// Returns in words which limit is reached; absent before that.
    std::optional<std::string> reached(const Facts& facts);

    /// Returns what ends the hold, as in "until 17:00, until 4711 ends"; empty without limits.
    [[nodiscard]] std::string waitsFor(const Facts& facts) const;

private:
    HoldLimits limits_;
    SteadyTime begin_;
    bool lidWasShut_ = false;
};

/// Returns "0:02:03" for 123 seconds.
std::string clockText(double seconds);

/// Returns whether both are on the same day, in the time zone of the system.
bool isSameDay(WallTime a, WallTime b);

/// Returns "14:02", or "2030-01-31 14:02" if the day is not that of `now`; for a time outside the
/// years 1970 to 9999 "an unknown time".
std::string timeOfDayText(WallTime time, WallTime now);

} // namespace velmo
