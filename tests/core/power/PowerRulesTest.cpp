#include "core/power/PowerGuardPolicy.h"
#include "core/power/PowerService.h"
#include "core/power/SleepSetting.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

TEST(SleepSetting, IsReadFromTheFirstLineThatHasIt) {
    const Strings disabled = {
        "System-wide power settings:\n SleepDisabled\t\t1\nCurrently in use:\n sleep 1\n",
        "SleepDisabled 1 (by a tool)", "SleepDisabled\nSleepDisabled 1",
        "x\u2028SleepDisabled 1\u0085SleepDisabled 0"};
    const Strings enabled = {" SleepDisabled\t0", "SleepDisabled 01", "SleepDisabled yes",
                             "SleepDisabled 0\r\nSleepDisabled 1"};
    for (const std::string& text : disabled)
        EXPECT_EQ(parseSleepDisabled(text), true) << text;
    for (const std::string& text : enabled)
        EXPECT_EQ(parseSleepDisabled(text), false) << text;
    expectRefused(parseSleepDisabled,
                  {"", "SleepDisabled", "SleepDisabled\v1", "SleepDisabled\u00A01",
                   "\xFF SleepDisabled 1", "SleepDisabledByUser 1", "sleepdisabled 1",
                   "x SleepDisabled 1"});
}

TEST(ThermalState, AnUnknownOneIsTheWorst) {
    const Strings names = words("nominal fair serious critical");
    for (int raw = -300; raw < 300; ++raw)
        EXPECT_EQ(thermalName(raw), names[raw >= 0 && raw < 4 ? static_cast<std::size_t>(raw) : 3]);
}

TEST(PowerService, RequirementsNameTheTeamAndTheOtherSide) {
    const std::string signedByTeam =
        R"(anchor apple generic and certificate leaf[subject.OU] = "ABCDE12345" and )";
    EXPECT_EQ(powerClientRequirement("ABCDE12345"),
              signedByTeam + R"((identifier "VelmoHelper" or identifier "io.velmo.host"))");
    EXPECT_EQ(powerDaemonRequirement("ABCDE12345"),
              signedByTeam + R"(identifier "VelmoPowerDaemon")");
}

TEST(PowerService, PutsOnlyAWellFormedTeamIntoARequirement) {
    for (const auto& requirement : {powerClientRequirement, powerDaemonRequirement}) {
        EXPECT_FALSE(requirement(std::nullopt));
        expectVerdicts(requirement, {"A", "1234567890123456", "Équipe"},
                       {"", "12345678901234567", "ABC-DE", "ABC DE", "A\"", "A\n", "\xFF",
                        "e\u0301", std::string("A\0B", 3), "\u0D4E\"", "😀", "A\u200D"});
    }
}

using PowerGuardPolicy::Revert;

TEST(PowerGuardPolicy, NamesTheGravestReason) {
    using enum ThermalState;
    const std::pair<PowerGuardPolicy::Facts, std::optional<Revert>> cases[] = {
        {{.lastBeat = {100}, .now = {135}}, {}},
        {{.lastBeat = {100}, .now = {135.001}}, Revert::heartbeat},
        {{.lastBeat = {100}, .now = {0}}, {}},
        {{.onAC = false, .battery = 1, .floor = 50, .thermalRaw = critical, .now = {36}},
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
