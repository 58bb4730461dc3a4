#include "core/power/KeepAwakeLines.h"
#include "core/power/KeepAwakeWant.h"
#include "core/power/PowerDaemonRecord.h"
#include "core/power/PowerDaemonStatusLine.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

TEST(PowerDaemonRecord, KeepsItsFormOnDisk) {
    const PowerDaemonRecord record{.previous = true, .since = 1700000000};
    const std::string line = R"({"previous":true,"since":1700000000})";
    EXPECT_EQ(encodeJson(record), line);
    const auto read = [](const std::string& text) { return decodeRecord<PowerDaemonRecord>(text); };
    for (const std::string& same : {line, changed(line, "{", R"( { "newer" : [null], )")})
        EXPECT_EQ(read(same), record) << same;
    expectRefused(read, {"", "{}", line + "x", changed(line, "true", "0"),
                         changed(line, "true", "null"), changed(line, "1700000000", "\"1\""),
                         changed(line, "previous", "since"), changed(line, "previous", "before")});
}

TEST(PowerDaemonStatusLine, TellsNeverRegisteredFromMissing) {
    const auto line = [](std::string_view service, bool plistInBundle) {
        return encodeJson(powerDaemonStatusLine(service, plistInBundle));
    };
    for (const bool plist : {false, true}) {
        for (const std::string& known : words("enabled requiresApproval notRegistered"))
            EXPECT_EQ(line(known, plist), R"({"status":")" + known + "\"}");
        for (const char* unknown : {"Enabled", ""})
            EXPECT_EQ(line(unknown, plist), R"({"reason":"unknown","status":"notFound"})");
    }
    EXPECT_EQ(line("notFound", true), R"({"status":"notRegistered"})");
    EXPECT_EQ(line("notFound", false), R"({"reason":"plist-missing","status":"notFound"})");
}

TEST(KeepAwakeWant, ReadsEachMemberOnItsOwn) {
    const std::pair<std::string, KeepAwakeWant> cases[] = {
        {" \t\r\n{}", {.batteryFloor = 10}},
        {R"({"system":true,"display":1,"closedLid":"true","batteryFloor":50,"why":null})",
         {.system = true, .batteryFloor = 50}},
        {R"({"system":null,"display":true,"closedLid":true,"why":"call","more":{}})",
         {.display = true, .closedLid = true, .why = "call"}},
        {R"({"batteryFloor":9})", {.batteryFloor = 10}},
        {R"({"batteryFloor":96})", {.batteryFloor = 95}},
        {R"({"batteryFloor":20.0})", {}},
    };
    for (const auto& [text, want] : cases)
        EXPECT_EQ(KeepAwakeWant::parse(text), want) << text;
    expectRefused(KeepAwakeWant::parse,
                  {"", " ", "[{}]", "null", "{", "{}x", "\u00A0{}", "\v{}", "\xEF\xBB\xBF{}"});
}

TEST(KeepAwakeWant, ADisplayOrAClosedLidNeedsTheSystem) {
    for (int bits = 0; bits < 8; ++bits) {
        const KeepAwakeWant want{
            .system = (bits & 1) != 0, .display = (bits & 2) != 0, .closedLid = (bits & 4) != 0};
        EXPECT_EQ(want.effectiveSystem(), bits != 0) << bits;
    }
}

TEST(KeepAwakeWant, IsWrittenWithEveryMemberAndUnclamped) {
    EXPECT_EQ(encodeJson(KeepAwakeWant{.closedLid = true, .batteryFloor = 3, .why = "a/b"}),
              R"({"batteryFloor":3,"closedLid":true,"display":false,"system":false,"why":"a\/b"})");
}

TEST(KeepAwakeLines, AreWrittenWithTheirType) {
    EXPECT_EQ(encodeJson(KeepAwakePowerLine{.thermal = "fair"}),
              R"({"thermal":"fair","type":"power"})");
    EXPECT_EQ(
        encodeJson(KeepAwakePowerLine{.ac = false, .battery = 7, .thermal = "fair", .lid = "open"}),
        R"({"ac":false,"battery":7,"lid":"open","thermal":"fair","type":"power"})");
    EXPECT_EQ(encodeJson(KeepAwakeLidLine{.state = "held", .reason = "battery"}),
              R"({"reason":"battery","state":"held","type":"closed-lid"})");
}

} // namespace
} // namespace velmo
