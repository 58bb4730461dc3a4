#include "machine/PowerReadings.h"

#include "core/power/SleepSetting.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::string_view mainsPower = "AC Power";
constexpr std::string_view internalBattery = "InternalBattery";

/// Returns the percentage truncated, then bounded to 0...100. The arithmetic is wide because
/// capacities may be any 64-bit numbers.
int percentOf(std::int64_t current, std::int64_t maximum) {
    __extension__ using Wide = __int128;
    const Wide percent = Wide{current} * 100 / maximum;
    return static_cast<int>(std::clamp<Wide>(percent, 0, 100));
}

std::optional<int> batteryPercent(const PowerSource& source) {
    if (source.type != internalBattery || !source.currentCapacity || !source.maximumCapacity
        || *source.maximumCapacity < 1)
        return std::nullopt;
    return percentOf(*source.currentCapacity, *source.maximumCapacity);
}

} // namespace

PowerReading readPower(PowerMachine& machine) {
    const auto snapshot = machine.powerSources();
    if (!snapshot)
        return {};
    PowerReading reading;
    if (snapshot->providingType)
        reading.ac = *snapshot->providingType == mainsPower;
    for (const PowerSource& source : snapshot->sources) {
        if (const auto percent = batteryPercent(source))
            reading.battery = percent;
    }
    return reading;
}

std::optional<bool> sleepDisabledPreference(PowerMachine& machine) {
    return machine.runPmset({"-g"}).and_then(
        [](const std::string& output) { return parseSleepDisabled(output); });
}

std::optional<bool> sleepDisabledNow(PowerMachine& machine) {
    const auto property = machine.sleepDisabledProperty();
    return property ? property : sleepDisabledPreference(machine);
}

} // namespace velmo
