#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// One entry of the system's list of power sources; what is not reported, or is of another type
/// than stated, is absent.
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

using PmsetArguments = std::initializer_list<std::string_view>;

/// The Mac as the daemon sees it: raw facts and one tool. Nothing here decides anything. Called on
/// the guard's queue only; `runPmset` may block.
class PowerMachine {
public:
    virtual ~PowerMachine() = default;

    /// Runs /usr/bin/pmset to its end and answers its standard output, ill-formed UTF-8 repaired.
    /// Absent when it could not be started or ended with another status than 0; an empty output is
    /// success.
    virtual std::optional<std::string> runPmset(PmsetArguments arguments) = 0;

    /// The property "SleepDisabled" of the power root domain; absent when there is no such service
    /// or the property is no Boolean.
    virtual std::optional<bool> sleepDisabledProperty() = 0;

    virtual std::optional<PowerSourceSnapshot> powerSources() = 0;

    /// 0 nominal, 1 fair, 2 serious, 3 critical.
    virtual int thermalRaw() = 0;

    /// Wall-clock time in seconds since 1970.
    virtual double now() = 0;
};

} // namespace velmo
