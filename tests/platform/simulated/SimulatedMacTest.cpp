#include "core/power/SleepSetting.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/posix/Clocks.h"
#include "platform/simulated/MacFolder.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace velmo {
namespace {

class SimulatedMacTest : public testing::Test {
protected:
    SimulatedMacTest() { EXPECT_TRUE(folder.create(VELMO_SIMULATED_PMSET)); }

    TemporaryFolder temporary;
    MacFolder folder{temporary.path() / "mac"};
    SimulatedPowerMachine machine{folder};
};

TEST_F(SimulatedMacTest, PmsetChangesAndPrintsTheSetting) {
    for (const bool disabled : {true, false}) {
        EXPECT_EQ(machine.runPmset({"-a", "disablesleep", disabled ? "1" : "0"}), "");
        EXPECT_EQ(machine.sleepDisabledProperty(), disabled);
        EXPECT_EQ(parseSleepDisabled(machine.runPmset({"-g"}).value()), disabled);
    }
    EXPECT_FALSE(machine.runPmset({"-a", "disablesleep", "2"}));
}

TEST_F(SimulatedMacTest, PeopleMayEditTheMachineFile) {
    const auto file = folder.root() / "machine.json";
    std::ifstream stream(file);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    EXPECT_TRUE(text.contains("\n  \"battery\": 80,\n")) << text;

    // Half saved: the last good state stands.
    EXPECT_EQ(machine.sleepDisabledProperty(), false);
    std::ofstream(file) << text.substr(0, text.size() / 2);
    EXPECT_TRUE(folder.exists() && !folder.load());
    EXPECT_EQ(machine.powerSources()->sources.size(), 1U);

    std::ofstream(file) << R"({"mains":false,"battery":null,"thermal":"serious",)"
                           R"("sleepDisabled":true,"clockOffset":-1e9,"userId":501,)"
                           R"("trustedUsers":[],"faults":{"pmset":"none",)"
                           R"("propertyUnreadable":true,"recordFolder":"none"}})";
    EXPECT_TRUE(machine.powerSources()->sources.empty());
    EXPECT_EQ(machine.thermalState(), ThermalState::serious);
    EXPECT_EQ(machine.sleepDisabledProperty(), std::nullopt);
    EXPECT_LT(machine.wallTime().sinceEpoch, Clocks::wallTime().sinceEpoch - 9e8);
}

TEST_F(SimulatedMacTest, ChangesOfSeveralProcessesAddUp) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this] {
            for (int j = 0; j < 5; ++j)
                folder.update([](SimulatedMac& mac) { mac.clockOffset += 1; });
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(folder.load()->clockOffset, 20);
}

} // namespace
} // namespace velmo
