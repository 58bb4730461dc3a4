#include "tools/velmo-power/StatusText.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::HasSubstr;

TEST(StatusText, TellsTheFactsAndWhatIsNotKnown) {
    PowerStatus status;
    status.thermal = "fair";
    EXPECT_EQ(encodeJson(status), R"({"thermal":"fair","type":"power"})");
    EXPECT_EQ(statusText(status, {}), "sleep    unknown\npower    unknown\n"
                                      "battery  none\nthermal  fair\nlid      none\n"
                                      "held by  unknown: the power daemon does not tell\n");
    status.ac = false;
    status.battery = 7;
    status.sleepDisabled = true;
    status.lid = "shut";
    status.holds = HoldReport{};
    EXPECT_EQ(statusText(status, {}), "sleep    disabled\npower    battery\n"
                                      "battery  7%\nthermal  fair\nlid      shut\n"
                                      "held by  nobody\n");
    EXPECT_EQ(HeldLine({.seconds = 36061.9, .floor = 3}).text(status),
              "awake for 10:01:01 | battery, battery 7% (floor 10%) | fair");
    status.sleepDisabled = false;
    EXPECT_EQ(HeldLine({.floor = 20, .riding = "caffe (7)", .until = "until 17:00"}).text(status),
              "held, but sleep is enabled by caffe (7), until 17:00 | battery, battery 7% (floor "
              "20%) | fair");
}

TEST(StatusText, TellsWhoHoldsAndWhyTheLastHoldEnded) {
    PowerStatus status;
    status.holds = HoldReport{
        .holder = HolderReport{.processId = 4711, .program = "velmo-power", .batteryFloor = 30},
        .sleepDisabled = false,
        .recordIsUnreadable = true,
        .lastEnd = HoldEnd{.how = "battery", .at = 0}};
    const std::string text = statusText(status, {.sinceEpoch = 1e9});
    EXPECT_THAT(text, HasSubstr("held by  velmo-power (4711) since 19"));
    EXPECT_THAT(text, HasSubstr(", floor 30%; but somebody has enabled sleep\n"));
    EXPECT_THAT(text, HasSubstr(": the battery fell below the floor\n"));
    EXPECT_THAT(text, HasSubstr("record   can't be read: sleep may still be disabled."));
    for (const HoldEnding ending : allCases<HoldEnding>)
        EXPECT_NE(endingText(rawText(ending)), "") << rawText(ending);
    EXPECT_EQ(endingText("struck by lightning"), "struck by lightning"); // of a newer daemon
}

TEST(StatusText, AProgramsNameIsNoCommandToTheTerminal) {
    EXPECT_EQ(holderText({.processId = 7, .program = "a\x1b]0;b\u202e\u009b31m\nc"}),
              "a]0;b31mc (7)");
}

} // namespace
} // namespace velmo
