#include "core/probes/SetupPermissionReport.h"

#include "tests/Texts.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

using Automation = SetupPermissionReport::Automation;

TEST(SetupPermissionReport, OnlyThreeStatusesSayWhatTheUserDecided) {
    const auto verdict = SetupPermissionReport::automationForStatus;
    EXPECT_EQ(verdict(0), Automation::granted);
    EXPECT_EQ(verdict(-1743), Automation::denied);
    EXPECT_EQ(verdict(-1744), Automation::notAsked);
    for (const std::int32_t status : {-600, 1, 1743, -1745, -1742, INT32_MIN})
        EXPECT_EQ(verdict(status), Automation::notRunning) << status;
}

TEST(SetupPermissionReport, AsksOnlyWithTheOneOption) {
    using Arguments = SetupPermissionReport::Arguments;
    const auto parse = SetupPermissionReport::parseArgs;
    EXPECT_EQ(parse({}), (Arguments{.ask = false, .ok = true}));
    EXPECT_EQ(parse(Strings{"--ask-automation"}), (Arguments{.ask = true, .ok = true}));
    for (const Strings& wrong :
         {Strings{""}, {"--ask"}, {"--ask-automation", ""}, {"", "--ask-automation"}})
        EXPECT_EQ(parse(wrong), Arguments()) << testing::PrintToString(wrong);
}

TEST(SetupPermissionReport, WritesEachTargetsVerdictAsItsText) {
    SetupPermissionReport report{.accessibility = true};
    std::int32_t status = -1745;
    for (const auto& target : SetupPermissionReport::targets)
        report.automation.emplace(target.key, SetupPermissionReport::automationForStatus(status++));
    EXPECT_EQ(encodeJson(report),
              R"({"accessibility":true,"automation":{"brave":"not-running","chrome":"not-running",)"
              R"("edge":"not-running","finder":"denied","music":"not-running",)"
              R"("spotify":"not-asked"},"screenRecording":false})");
}

} // namespace
} // namespace velmo
