#pragma once

#include "core/power/ThermalState.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// What pmset does instead of its job.
enum class PmsetFault {
    none,
    fails, ///< ends with status 1
    dies,  ///< is killed by a signal
    hangs, ///< does not end before the fault is taken away
    lies,  ///< reports success and changes nothing
};

template<>
inline constexpr auto rawTexts<PmsetFault> =
    std::to_array<std::string_view>({"none", "fails", "dies", "hangs", "lies"});

/// What is wrong with the folder of the daemon's record.
enum class RecordFolderFault {
    none,
    readOnly, ///< nothing can be written into it
    link,     ///< somebody has put a symbolic link in its place
};

template<>
inline constexpr auto rawTexts<RecordFolderFault> =
    std::to_array<std::string_view>({"none", "readOnly", "link"});

struct MacFaults {
    PmsetFault pmset = PmsetFault::none;
    bool propertyUnreadable = false; ///< "SleepDisabled" of the power root domain
    RecordFolderFault recordFolder = RecordFolderFault::none;

    static constexpr auto fields =
        std::tuple{field("pmset", &MacFaults::pmset),
                   field("propertyUnreadable", &MacFaults::propertyUnreadable),
                   field("recordFolder", &MacFaults::recordFolder)};
    bool operator==(const MacFaults&) const = default;
};

/// The state of a simulated Mac, as its machine file holds it for people to read and edit.
struct SimulatedMac {
    bool mains = true;
    std::optional<int> battery = 80; ///< percent; null or missing: a Mac without a battery
    ThermalState thermal = ThermalState::nominal;
    bool sleepDisabled = false;
    double elapsed = 0;      ///< seconds that have passed on the Mac beyond this machine's
    double clockOffset = 0;  ///< seconds by which the Mac's clock was set forward, or back
    std::int64_t userId = 0; ///< real user id that the daemon believes to run under
    std::optional<std::string> team = "VELMO12345"; ///< null or missing: the daemon is unsigned
    std::vector<std::int64_t> trustedUsers; ///< user ids whose processes count as signed clients
    MacFaults faults;

    static constexpr auto fields =
        std::tuple{field("mains", &SimulatedMac::mains),
                   field("battery", &SimulatedMac::battery),
                   field("thermal", &SimulatedMac::thermal),
                   field("sleepDisabled", &SimulatedMac::sleepDisabled),
                   field("elapsed", &SimulatedMac::elapsed).orDefault(),
                   field("clockOffset", &SimulatedMac::clockOffset).orDefault(),
                   field("userId", &SimulatedMac::userId),
                   field("team", &SimulatedMac::team),
                   field("trustedUsers", &SimulatedMac::trustedUsers),
                   field("faults", &SimulatedMac::faults)};
    bool operator==(const SimulatedMac&) const = default;
};

} // namespace velmo
