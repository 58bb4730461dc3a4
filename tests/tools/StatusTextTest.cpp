#include "tools/velmo-power/StatusText.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

TEST(StatusText, TellsTheFactsAndWhatIsNotKnown) {
    PowerStatus status;
    status.thermal = "fair";
    EXPECT_EQ(encodeJson(status), R"({"thermal":"fair","type":"power"})");
    EXPECT_EQ(statusText(status), "sleep    unknown\npower    unknown\n"
                                  "battery  none\nthermal  fair\nlid      none\n");
    status.ac = false;
    status.battery = 7;
    status.sleepDisabled = true;
    status.lid = "shut";
    EXPECT_EQ(
        encodeJson(status),
        R"({"ac":false,"battery":7,"lid":"shut","sleepDisabled":true,"thermal":"fair","type":"power"})");
    EXPECT_EQ(statusText(status), "sleep    disabled\npower    battery\n"
                                  "battery  7%\nthermal  fair\nlid      shut\n");
    EXPECT_EQ(heldLine(36061.9, 3, status),
              "awake for 10:01:01 | power: battery, battery 7% (floor 10%) | fair");
}

} // namespace
} // namespace velmo
