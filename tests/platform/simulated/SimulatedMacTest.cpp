#include "core/power/SleepSetting.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/posix/ChildProcess.h"
#include "platform/simulated/CallLine.h"
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
    EXPECT_EQ(machine.runPmset({"-a", "disablesleep", "1"}), "");
    EXPECT_TRUE(folder.load()->sleepDisabled);
    EXPECT_EQ(machine.sleepDisabledProperty(), true);
    EXPECT_EQ(parseSleepDisabled(machine.runPmset({"-g"}).value()), true);
    EXPECT_EQ(machine.runPmset({"-a", "disablesleep", "0"}), "");
    EXPECT_EQ(parseSleepDisabled(machine.runPmset({"-g"}).value()), false);
    for (const PmsetArguments words :
         {PmsetArguments{}, {"-a"}, {"-a", "disablesleep", "2"}, {"-a", "sleep", "1"}, {"-g", "x"}})
        EXPECT_FALSE(machine.runPmset(words));
    std::filesystem::remove(folder.pmset());
    EXPECT_FALSE(machine.runPmset({"-g"}));
}

TEST_F(SimulatedMacTest, PeopleMayEditTheMachineFile) {
    const auto file = folder.root() / "machine.json";
    std::ifstream stream(file);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    EXPECT_TRUE(text.contains("  \"battery\": 80,\n")) << text;

    // Half saved: the last good state stands.
    EXPECT_EQ(machine.sleepDisabledProperty(), false);
    std::ofstream(file) << text.substr(0, text.size() / 2);
    EXPECT_FALSE(folder.load());
    EXPECT_EQ(machine.powerSources()->sources.size(), 1U);
    EXPECT_FALSE(folder.update([](SimulatedMac&) {}));

    std::ofstream(file) << R"({"mains":false,"battery":null,"thermal":"serious",)"
                           R"("sleepDisabled":true,"clockOffset":-1e9,"userId":501,)"
                           R"("trustedUsers":[],"faults":{"pmset":"none",)"
                           R"("propertyUnreadable":false,"recordFolder":"none"}})";
    EXPECT_TRUE(machine.powerSources()->sources.empty());
    EXPECT_EQ(machine.powerSources()->providingType, "Battery Power");
    EXPECT_EQ(machine.thermalState(), ThermalState::serious);
    EXPECT_EQ(folder.load()->team, std::nullopt);
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

TEST(CallLine, IsACallOrNothing) {
    EXPECT_EQ(CallLine::parse(R"({"call":"hold","batteryFloor":-5})"),
              (CallLine{.call = PowerCall::hold, .batteryFloor = -5}));
    EXPECT_EQ(CallLine::parse(R"({"call":"release","x":1})"),
              (CallLine{.call = PowerCall::release, .batteryFloor = {}}));
    for (const char* refused : {"", "{}", "[]", R"({"call":"hold"})", R"({"call":"Hold"})",
                                R"({"call":"hold","batteryFloor":20.5})",
                                R"({"call":"hold","batteryFloor":9223372036854775808})"})
        EXPECT_FALSE(CallLine::parse(refused)) << refused;
}

} // namespace
} // namespace velmo
