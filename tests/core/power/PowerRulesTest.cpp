#include "core/power/PowerGuardPolicy.h"
#include "core/power/PowerService.h"
#include "core/power/SleepSetting.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace velmo {
namespace {

TEST(SleepSetting, IsReadFromTheFirstLineThatHasIt) {
    struct Case {
        std::string text;
        std::optional<bool> disabled;
    };

    const Case cases[] = {
        {"System-wide power settings:\n SleepDisabled\t\t1\nCurrently in use:\n sleep 1\n", true},
        {" SleepDisabled\t0", false},
        {"SleepDisabled 1 (by a tool)", true},
        {"SleepDisabled 01", false},
        {"SleepDisabled yes", false},
        {"SleepDisabled\nSleepDisabled 1", true},
        {"SleepDisabled 0\r\nSleepDisabled 1", false},
        {"x\u2028SleepDisabled 1\u0085", true},
        {"SleepDisabled", {}},
        {"SleepDisabled\v1", {}},
        {"SleepDisabled\u00A01", {}},
        {"SleepDisabledByUser 1", {}},
        {"sleepdisabled 1", {}},
        {"x SleepDisabled 1", {}},
        {"\xFF SleepDisabled 1", {}},
        {"", {}},
    };
    for (const auto& [text, disabled] : cases)
        EXPECT_EQ(parseSleepDisabled(text), disabled) << testing::PrintToString(text);
}

TEST(SleepSetting, AnUnknownHeatIsTheWorst) {
    const std::pair<int, std::string_view> cases[] = {
        {0, "nominal"},  {1, "fair"},      {2, "serious"},          {3, "critical"},
        {4, "critical"}, {-1, "critical"}, {INT32_MIN, "critical"}, {INT32_MAX, "critical"}};
    for (const auto& [raw, name] : cases)
        EXPECT_EQ(thermalName(raw), name) << raw;
}

TEST(PowerService, RequirementsNameTheTeamAndTheOtherSide) {
    EXPECT_EQ(powerClientRequirement("ABCDE12345"),
              "anchor apple generic and certificate leaf[subject.OU] = \"ABCDE12345\" and "
              "(identifier \"VelmoHelper\" or identifier \"io.velmo.host\")");
    EXPECT_EQ(powerDaemonRequirement("ABCDE12345"),
              "anchor apple generic and certificate leaf[subject.OU] = \"ABCDE12345\" and "
              "identifier \"VelmoPowerDaemon\"");
}

TEST(PowerService, NothingButATeamReachesARequirement) {
    for (const char* team : {"A", "1234567890123456", "Équipe"})
        EXPECT_TRUE(powerClientRequirement(team)) << team;
    const std::optional<std::string> refused[] = {
        std::nullopt, "",        "12345678901234567",    "ABC-DE",   "ABC DE",     "A\"", "A\n",
        "\xFF",       "e\u0301", std::string("A\0B", 3), "\u0D4E\"", "A\"or true", "😀",  "A\u200D",
    };
    for (const auto& team : refused) {
        EXPECT_FALSE(powerClientRequirement(team)) << testing::PrintToString(team);
        EXPECT_FALSE(powerDaemonRequirement(team)) << testing::PrintToString(team);
    }
}

using PowerGuardPolicy::Revert;

TEST(PowerGuardPolicy, NamesTheGravestReason) {
    using enum ThermalState;

    struct Case {
        PowerGuardPolicy::Facts facts;
        std::optional<Revert> reason;
    };

    const Case cases[] = {
        {{.lastBeat = 100, .now = 135}, {}},
        {{.lastBeat = 100, .now = 135.001}, Revert::heartbeat},
        {{.lastBeat = 100, .now = 0}, {}},
        {{.onAC = false, .battery = 1, .floor = 50, .thermalRaw = critical, .now = 36},
         Revert::heartbeat},
        {{.onAC = true, .thermalRaw = fair}, {}},
        {{.onAC = true, .thermalRaw = serious}, Revert::thermal},
        {{.onAC = false, .battery = 1, .thermalRaw = serious}, Revert::thermal},
        {{.thermalRaw = static_cast<ThermalState>(-1)}, {}},
        {{.onAC = false, .battery = 19, .floor = 20}, Revert::battery},
        {{.onAC = false, .battery = 20, .floor = 20}, {}},
        {{.onAC = true, .battery = 1, .floor = 20}, {}},
        {{.onAC = {}, .battery = 1, .floor = 20}, {}},
        {{.onAC = false, .battery = {}, .floor = 20}, {}},
        {{.onAC = false, .battery = 9, .floor = 5}, Revert::battery},
        {{.onAC = false, .battery = 10, .floor = INT64_MIN}, {}},
        {{.onAC = false, .battery = 94, .floor = 99}, Revert::battery},
        {{.onAC = false, .battery = 95, .floor = INT64_MAX}, {}},
    };
    int row = 0;
    for (const auto& [facts, reason] : cases) {
        EXPECT_EQ(PowerGuardPolicy::check(facts), reason) << "row " << row;
        ++row;
    }
}

} // namespace
} // namespace velmo
