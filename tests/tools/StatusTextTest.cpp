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
    status.whyUntold = "it is asleep";
    EXPECT_THAT(statusText(status, {}), testing::EndsWith("held by  unknown: it is asleep\n"));
    status.ac = false;
    status.battery = 7;
    status.sleepDisabled = true;
    status.lid = LidPosition::shut;
    status.holds = HoldReport{};
    EXPECT_EQ(statusText(status, {}), "sleep    disabled\npower    battery\n"
                                      "battery  7%\nthermal  fair\nlid      shut\n"
                                      "held by  nobody\n");
    EXPECT_THAT(encodeJson(status).value(), HasSubstr(R"("lid":"shut")"));
    EXPECT_THAT(statusText(status, {}, "/tmp/\x1bmac"),
                testing::StartsWith("mac      simulated, in /tmp/mac\nsleep    disabled\n"));
    EXPECT_EQ(HeldLine({.seconds = 36061.9, .floor = 3}).text(status),
              "awake for 10:01:01 | battery 7% (floor 10%) | fair");
    status.sleepDisabled = false;
    EXPECT_EQ(HeldLine({.floor = 20, .riding = "caffe (7)", .until = "until 17:00"}).text(status),
              "held by caffe (7), but sleep is enabled, until 17:00 | battery 7% (floor "
              "20%) | fair");
}

TEST(StatusText, TellsWhoHoldsAndWhyTheLastHoldEnded) {
    PowerStatus status;
    status.holds = HoldReport{
        .holder = HolderReport{.processId = 4711, .program = "velmo-power", .batteryFloor = 30},
        .sleepDisabled = false,
        .recordIsUnreadable = true,
        .lastEnd = HoldEnd{.how = "battery", .at = 0}};
    status.command = "make all";
    const std::string text = statusText(status, {.sinceEpoch = 1e9});
    EXPECT_THAT(text, HasSubstr("held by  velmo-power (4711) since 19"));
    EXPECT_THAT(text, HasSubstr(", floor 30%, for make all; but somebody has enabled sleep\n"));
    EXPECT_THAT(text, HasSubstr(": the battery fell below the floor\n"));
    EXPECT_THAT(text, HasSubstr("record   can't be read: sleep may still be disabled;"));
    for (const HoldEnding ending : allCases<HoldEnding>)
        EXPECT_NE(endingText(rawText(ending)), "") << rawText(ending);
    // A newer daemon may have others, and a terminal obeys what it is sent.
    EXPECT_EQ(endingText("\x1b[2J"), "it ended in a way that this version does not know");
    status.holds->lastEnd->at = 1e300;
    EXPECT_THAT(statusText(status, {.sinceEpoch = 1e9}), HasSubstr(" ended at an unknown time: "));
    PowerStatus later = status;
    later.holds->holder->heartbeatAge = 9;
    EXPECT_TRUE(isSameStatus(status, later));
    later.holds->holder->batteryFloor = 31;
    EXPECT_FALSE(isSameStatus(status, later));
}

TEST(StatusText, DescribesTheStateOfOnesOwnHold) {
    using State = HoldKeeper::State;

    struct Case {
        HoldKeeper::Status status;
        std::string_view text;
    };

    const HolderReport other{.processId = 7, .program = "caffe"};
    const Case cases[] = {
        {{.state = State::connecting}, "asking for the hold"},
        {{.state = State::connecting, .reason = "heartbeat"},
         "its client was silent for too long; asking again"},
        {{.state = State::connecting, .reason = "connection"},
         "the power daemon went away; asking again"},
        {{.state = State::connecting, .reason = "unknown"},
         "the power daemon ended the hold; asking again"},
        {{.state = State::holding}, "holding: the Mac stays awake"},
        {{.state = State::riding},
         "the Mac is held awake already, by another client; its hold is "
         "taken over when it ends"},
        {{.state = State::riding, .holder = other},
         "the Mac is held awake already, by caffe (7); "
         "its hold is taken over when it ends"},
        {{.state = State::refused, .reason = "record"},
         "refused: the daemon can't write its record"},
        {{.state = State::refused, .reason = "full moon"},
         "refused: for a reason that this version does not know"},
        {{.state = State::unreachable}, "the power daemon can't be reached"},
        {{.state = State::unreachable, .reason = "silent"}, "the power daemon does not answer"},
        {{.state = State::unreachable, .reason = "full"}, "the power daemon has too many clients"},
        {{.state = State::released, .reason = "released by another"},
         "the hold is over: released by another client"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(holdText(c.status), c.text);
}

TEST(StatusText, RemovesTerminalSequencesFromAProgramsName) {
    EXPECT_EQ(holderText({.processId = 7, .program = "a\x1b]0;b\u202e\u009b31m\nc"}),
              "a]0;b31mc (7)");
}

TEST(StatusText, ReadsTheCommandFromAHoldersArguments) {
    struct Case {
        std::vector<std::string> arguments;
        std::optional<std::string> command;
    };

    const std::string hundred(100, 'x');
    for (const auto& [arguments, command] : {
             Case{{"velmo-power", "hold", "make", "all"}, "make all"},
             Case{{"/x", "--mac", "m", "hold", "--floor", "30", "--", "-c", "--for"}, "-c --for"},
             Case{{"x", "--ready-descriptor", "5", "hold", "--background", "make"}, "make"},
             Case{{"x", "hold", "sh", "-c", "a\n\x1b[2Jb\u202e"}, "sh -c a [2Jb"},
             Case{{"x", "hold", std::string(60, 'x')}, std::string(60, 'x')},
             Case{{"x", "hold", hundred}, std::string(59, 'x') + "…"},
             Case{{"x", "hold"}, {}},
             Case{{"x", "status"}, {}},
             Case{{"x", "hold", "--bogus", "make"}, {}},
             Case{{"hold"}, {}},
             Case{{}, {}},
         })
        EXPECT_EQ(commandText(arguments), command);
}

} // namespace
} // namespace velmo
