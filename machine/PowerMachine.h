#pragma once

#include "core/power/ThermalState.h"
#include "core/support/Time.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// An entry of the system's list of power sources. A value that is not reported, or is of another
/// type than here, is absent.
struct PowerSource {
    std::optional<std::string> type;             ///< "Type"
    std::optional<std::int64_t> currentCapacity; ///< "Current Capacity"
    std::optional<std::int64_t> maximumCapacity; ///< "Max Capacity"
};

/// The power-source snapshot as the system gives it.
struct PowerSourceSnapshot {
    std::optional<std::string> providingType; ///< type of the source that provides power now
    std::vector<PowerSource> sources;
};

/// The lid as the power root domain reports it.
struct LidState {
    bool isShut = false;      ///< "AppleClamshellState"
    bool causesSleep = false; ///< "AppleClamshellCausesSleep": shutting it puts this Mac to sleep

    bool operator==(const LidState&) const = default;
};

using PmsetArguments = std::initializer_list<std::string_view>;

/// A Mac's power as raw facts, and the one tool that changes it. Nothing here decides anything. A
/// machine is used by one thread at a time, in the daemon by the guard's queue; `runPmset` may
/// block.
class PowerMachine {
public:
    virtual ~PowerMachine() = default;

    /// Runs /usr/bin/pmset to its end and returns its standard output, ill-formed UTF-8 repaired.
    /// Absent if the tool could not be started or ended with a status other than 0; an empty output
    /// is success.
    virtual std::optional<std::string> runPmset(PmsetArguments arguments) = 0;

    /// Returns the property "SleepDisabled" of the power root domain. Absent if the service is
    /// missing or the property is not a Boolean.
    virtual std::optional<bool> sleepDisabledProperty() = 0;

    virtual std::optional<PowerSourceSnapshot> powerSources() = 0;

    virtual ThermalState thermalState() = 0;

    /// Returns the state of the lid. Absent if either property is missing, as on a Mac without a
    /// lid.
    virtual std::optional<LidState> lid() = 0;

    /// Asks the system to sleep at once (IOPMSleepSystem). Returns whether the system took the
    /// request.
    virtual bool requestSleep() = 0;

    virtual WallTime wallTime() = 0;
    virtual SteadyTime steadyTime() = 0;

    /// Lets so many seconds pass on the calling thread.
    virtual void pause(double seconds) = 0;
};

} // namespace velmo
