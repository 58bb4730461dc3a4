#include "machine/PowerReadings.h"

#include "lab/instruments/GuardedMac.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace velmo {
namespace {

/// A machine with fixed power sources.
struct FixedMachine final : FakeMachine {
    FixedMachine() : FakeMachine(events) {}

    std::optional<PowerSourceSnapshot> powerSources() override { return snapshot; }

    Events events;
    std::optional<PowerSourceSnapshot> snapshot;
};

PowerSource battery(std::optional<std::int64_t> current, std::optional<std::int64_t> maximum) {
    return {.type = "InternalBattery", .currentCapacity = current, .maximumCapacity = maximum};
}

TEST(PowerReadings, TellTheBatteryFromItsRawCapacities) {
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();

    const std::pair<std::vector<PowerSource>, std::optional<int>> cases[] = {
        {{}, {}},
        {{battery(2999, 4000)}, 74},
        {{battery(5, 4)}, 100},
        {{battery(-5, 4)}, 0},
        {{battery(huge - 1, huge)}, 99},
        {{battery(-huge, 1)}, 0},
        {{battery(50, 0)}, {}},
        {{battery({}, 100)}, {}},
        {{battery(50, {})}, {}},
        {{{.type = "UPS", .currentCapacity = 50, .maximumCapacity = 100}}, {}},
        {{{.type = {}, .currentCapacity = 50, .maximumCapacity = 100}}, {}},
        {{battery(10, 100), battery(20, 100)}, 20},
        {{battery(10, 100), battery(20, 0)}, 10},
    };
    FixedMachine machine;
    int row = 0;
    for (const auto& [sources, percent] : cases) {
        machine.snapshot = {.providingType = "Battery Power", .sources = sources};
        EXPECT_EQ(readPower(machine), (PowerReading{.ac = false, .battery = percent}))
            << "row " << row;
        ++row;
    }
}

TEST(PowerReadings, AnUnknownSourceIsNotTheBattery) {
    FixedMachine machine;
    EXPECT_EQ(readPower(machine), PowerReading());
    machine.snapshot = {.providingType = {}, .sources = {battery(1, 2)}};
    EXPECT_EQ(readPower(machine), (PowerReading{.ac = {}, .battery = 50}));
    machine.snapshot->providingType = "AC Power";
    EXPECT_EQ(readPower(machine).ac, true);
    machine.snapshot->providingType = "UPS Power";
    EXPECT_EQ(readPower(machine).ac, false);
}

} // namespace
} // namespace velmo
