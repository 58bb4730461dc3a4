#include "core/power/KeepAwakeLines.h"
#include "core/power/KeepAwakeWant.h"
#include "core/power/PowerDaemonRecord.h"
#include "core/power/PowerDaemonStatusLine.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

using namespace std::string_literals;

TEST(PowerDaemonRecord, KeepsItsFormOnDisk) {
    const PowerDaemonRecord record{.previous = true, .since = 1700000000};
    EXPECT_EQ(encodeJson(record), R"({"previous":true,"since":1700000000})");
    EXPECT_EQ(decodeRecord<PowerDaemonRecord>(encodeJson(record).value()), record);

    for (const char* accepted : {R"({"since":1.5,"previous":false})",
                                 R"( {"previous":false,"since":1.5,"newer":[null]} )"})
        EXPECT_EQ(decodeRecord<PowerDaemonRecord>(accepted),
                  (PowerDaemonRecord{.previous = false, .since = 1.5}))
            << accepted;
    for (const char* refused :
         {"", "{}", "[]", R"({"previous":false})", R"({"previous":0,"since":1})",
          R"({"previous":null,"since":1})", R"({"previous":false,"since":"1"})",
          R"({"previous":false,"since":1}x)", R"({"previous":false,"previous":true,"since":1})"})
        EXPECT_FALSE(decodeRecord<PowerDaemonRecord>(refused)) << refused;
}

TEST(PowerDaemonStatusLine, TellsNeverRegisteredFromMissing) {
    struct Case {
        std::string service;
        bool plistInBundle;
        std::string line;
    };

    const Case cases[] = {
        {"enabled", false, R"({"status":"enabled"})"},
        {"requiresApproval", true, R"({"status":"requiresApproval"})"},
        {"notRegistered", false, R"({"status":"notRegistered"})"},
        {"notFound", true, R"({"status":"notRegistered"})"},
        {"notFound", false, R"({"reason":"plist-missing","status":"notFound"})"},
        {"Enabled", true, R"({"reason":"unknown","status":"notFound"})"},
        {"", false, R"({"reason":"unknown","status":"notFound"})"},
    };
    for (const auto& [service, plistInBundle, line] : cases)
        EXPECT_EQ(encodeJson(powerDaemonStatusLine(service, plistInBundle)), line) << service;
}

TEST(KeepAwakeWant, ReadsEachMemberOnItsOwn) {
    struct Case {
        std::string text;
        KeepAwakeWant want;
    };

    const Case cases[] = {
        {" \t\r\n{}", {}},
        {R"({"system":true,"display":1,"closedLid":"true","batteryFloor":50,"why":null})",
         {.system = true, .batteryFloor = 50}},
        {R"({"system":null,"display":true,"closedLid":true,"why":"call","more":{}})",
         {.display = true, .closedLid = true, .why = "call"}},
        {R"({"batteryFloor":3})", {}},
        {R"({"batteryFloor":-9223372036854775808})", {}},
        {R"({"batteryFloor":9223372036854775807})", {.batteryFloor = 95}},
        {R"({"batteryFloor":20.0})", {}},
        {R"({"batteryFloor":"20"})", {}},
    };
    for (const auto& [text, want] : cases)
        EXPECT_EQ(KeepAwakeWant::parse(text), want) << text;

    for (const std::string& refused : {""s, " "s, "["s, "[{}]"s, "null"s, "{"s, "{}x"s, "\u00A0{}"s,
                                       "\v{}"s, "\xEF\xBB\xBF{}"s, "{\"why\":\"\xFF\"}"s, "{}\0"s})
        EXPECT_FALSE(KeepAwakeWant::parse(refused)) << refused;
}

TEST(KeepAwakeWant, ADisplayOrAClosedLidNeedsTheSystem) {
    EXPECT_FALSE(KeepAwakeWant().effectiveSystem());
    EXPECT_TRUE(KeepAwakeWant{.system = true}.effectiveSystem());
    EXPECT_TRUE(KeepAwakeWant{.display = true}.effectiveSystem());
    EXPECT_TRUE(KeepAwakeWant{.closedLid = true}.effectiveSystem());
    EXPECT_EQ(encodeJson(KeepAwakeWant{.closedLid = true, .batteryFloor = 3, .why = "a/b"}),
              R"({"batteryFloor":3,"closedLid":true,"display":false,"system":false,"why":"a\/b"})");
}

TEST(KeepAwakeLines, WriteTheirTypeAlways) {
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
