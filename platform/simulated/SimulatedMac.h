#pragma once

#include "core/power/ThermalState.h"
#include "core/support/Record.h"
#include "core/support/Time.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// What pmset does instead of its job.
enum class PmsetFault {
    none,
    fails, ///< ends with status 1
    dies,  ///< is killed by a signal
    hangs, ///< does not end before the fault is removed
    lies,  ///< reports success and changes nothing
};

template<>
inline constexpr auto rawTexts<PmsetFault> =
    std::to_array<std::string_view>({"none", "fails", "dies", "hangs", "lies"});

enum class Lid { open, shut, none };

template<>
inline constexpr auto rawTexts<Lid> = std::to_array<std::string_view>({"open", "shut", "none"});

/// What is wrong with the folder of the daemon's record.
enum class RecordFolderFault {
    none,
    readOnly, ///< nothing can be written into it
    link,     ///< a symbolic link has taken its place
};

template<>
inline constexpr auto rawTexts<RecordFolderFault> =
    std::to_array<std::string_view>({"none", "readOnly", "link"});

struct MacFaults {
    PmsetFault pmset = PmsetFault::none;
    bool propertyUnreadable = false; ///< "SleepDisabled" of the power root domain
    double lateness = 0;             ///< milliseconds until the property follows what pmset has set
    RecordFolderFault recordFolder = RecordFolderFault::none;

    static constexpr auto fields =
        std::tuple{field("pmset", &MacFaults::pmset),
                   field("propertyUnreadable", &MacFaults::propertyUnreadable),
                   field("lateness", &MacFaults::lateness).orDefault(),
                   field("recordFolder", &MacFaults::recordFolder)};
    bool operator==(const MacFaults&) const = default;
};

/// A sleep setting that pmset has written and that has yet to take effect.
struct LateSetting {
    bool sleepDisabled = false;
    double due = 0; ///< seconds of the steady clock

    static constexpr auto fields = std::tuple{field("sleepDisabled", &LateSetting::sleepDisabled),
                                              field("due", &LateSetting::due)};
    bool operator==(const LateSetting&) const = default;
};

/// The state of a simulated Mac, as people read and edit it in the machine file.
struct SimulatedMac {
    bool mains = true;
    std::optional<int> battery = 80; ///< percent; null or missing: a Mac without a battery
    ThermalState thermal = ThermalState::nominal;
    Lid lid = Lid::open;
    bool displayIsOff = false; ///< it was turned off, and the lid has not been opened since
    bool asleep = false;       ///< it was asked to sleep, and its lid has not been opened since
    bool sleepDisabled = false;
    std::optional<LateSetting> late; ///< what will take the place of `sleepDisabled`
    double elapsed = 0;              ///< seconds that have passed on the Mac beyond this machine's
    double clockOffset = 0;          ///< seconds by which the Mac's clock was set forward, or back
    std::int64_t userId = 0;         ///< real user id that the daemon believes it runs under
    std::optional<std::string> team = "VELMO12345"; ///< null or missing: the daemon is unsigned
    std::vector<std::int64_t> trustedUsers; ///< user ids; their processes count as signed clients
    MacFaults faults;

    /// Puts a late setting that is due by now in the place of `sleepDisabled`, which is what the
    /// property says.
    void settle(SteadyTime now) {
        if (late && now.seconds >= late->due)
            sleepDisabled = std::exchange(late, std::nullopt)->sleepDisabled;
    }

    /// Returns what pmset has written last, which is what it prints.
    [[nodiscard]] bool preference() const { return late ? late->sleepDisabled : sleepDisabled; }

    static constexpr auto fields =
        std::tuple{field("mains", &SimulatedMac::mains),
                   field("battery", &SimulatedMac::battery),
                   field("thermal", &SimulatedMac::thermal),
                   field("lid", &SimulatedMac::lid).orDefault(),
                   field("displayIsOff", &SimulatedMac::displayIsOff).orDefault(),
                   field("asleep", &SimulatedMac::asleep).orDefault(),
                   field("sleepDisabled", &SimulatedMac::sleepDisabled),
                   field("late", &SimulatedMac::late),
                   field("elapsed", &SimulatedMac::elapsed).orDefault(),
                   field("clockOffset", &SimulatedMac::clockOffset).orDefault(),
                   field("userId", &SimulatedMac::userId),
                   field("team", &SimulatedMac::team),
                   field("trustedUsers", &SimulatedMac::trustedUsers),
                   field("faults", &SimulatedMac::faults)};
    bool operator==(const SimulatedMac&) const = default;
};

} // namespace velmo
