#include "core/power/SleepSetting.h"
#include "lab/instruments/TemporaryFolder.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/posix/Clocks.h"
#include "platform/simulated/MacFolder.h"
#include "platform/simulated/RecordFault.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>
#include <tuple>

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

TEST_F(SimulatedMacTest, ReadsAMachineFileThatWasEditedByHand) {
    const auto file = folder.root() / "machine.json";
    std::ifstream stream(file);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    EXPECT_TRUE(text.contains("\n  \"battery\": 80,\n")) << text;

    // While the file is only half saved, what may be unknown is unknown.
    folder.update([](SimulatedMac& mac) { mac.thermal = ThermalState::fair; });
    EXPECT_EQ(machine.sleepDisabledProperty(), false);
    EXPECT_EQ(machine.thermalState(), ThermalState::fair);
    std::ofstream(file) << text.substr(0, text.size() / 2);
    EXPECT_TRUE(folder.exists() && !folder.load());
    EXPECT_EQ(machine.sleepDisabledProperty(), std::nullopt);
    EXPECT_FALSE(machine.powerSources() || machine.lid());
    EXPECT_EQ(machine.thermalState(), ThermalState::fair);

    std::ofstream(file) << R"({"mains":false,"battery":null,"thermal":"serious",)"
                           R"("sleepDisabled":true,"clockOffset":-1e9,"userId":501,)"
                           R"("trustedUsers":[],"faults":{"pmset":"none",)"
                           R"("propertyUnreadable":true,"recordFolder":"none"}})";
    EXPECT_TRUE(machine.powerSources()->sources.empty());
    EXPECT_EQ(machine.thermalState(), ThermalState::serious);
    EXPECT_EQ(machine.sleepDisabledProperty(), std::nullopt);
    EXPECT_LT(machine.wallTime().sinceEpoch, Clocks::wallTime().sinceEpoch - 9e8);
}

TEST_F(SimulatedMacTest, NamesTheWrongMemberOfADamagedMachineFile) {
    const std::string sound = *encodeJson(*folder.load());
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {R"("mains":true)", R"("mains":1)", R"("mains" must be true or false)"},
        {R"("battery":80,)", R"("battery":"80",)", R"("battery" must be a whole number, or null)"},
        {R"("battery":80,)", R"("battery":80.5,)", R"("battery" must be a whole number, or null)"},
        {R"("mains":true,)", "", R"("mains" is missing; it must be true or false)"},
        {R"("lid":"open")", R"("lid":"ajar")", R"("lid" must be one of "open", "shut", "none")"},
        {R"("lateness":0,)", R"("lateness":"0",)", R"("faults.lateness" must be a number)"},
        {R"("team":"VELMO12345")", R"("team":0)", R"("team" must be a text, or null)"},
        {R"("trustedUsers":[)", R"("trustedUsers":["me",)",
         R"("trustedUsers" must be a list, each of it a whole number)"},
        {"{", "[", "it is no object in JSON"},
        {R"("mains":true)", R"("mains" :true, "mains": true)", R"("mains" is given twice)"},
        {R"("faults":{)", R"("faults":{"pmset":"none",)", R"("pmset" is given twice)"},
        // Neither a value nor another object's member counts.
        {R"("team":"VELMO12345")", R"("team":"te\"am","x":{"team":"x"},"x":"team",,)",
         R"("x" is given twice)"},
        {R"("team":"VELMO12345")", R"("team":"mains","x":{"mains":"x"},"y":"\",)",
         "it is no object in JSON"},
    };
    for (const auto& [good, bad, told] : cases) {
        std::string text = sound;
        text.replace(text.find(good), good.size(), bad);
        EXPECT_EQ(faultOf<SimulatedMac>(text), told);
    }
    EXPECT_EQ(faultOf<SimulatedMac>(R"({"faults":{"pmset":"none"},"mains":true,"thermal":"fair",)"
                                    R"("sleepDisabled":true,"trustedUsers":[],"userId":0})"),
              R"("faults.propertyUnreadable" is missing; it must be true or false)");
    EXPECT_EQ(faultOf<SimulatedMac>(sound), std::nullopt);
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
