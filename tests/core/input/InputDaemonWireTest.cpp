#include "core/input/InputDaemonWire.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmo {
namespace {

using InputDaemonWire::Request;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

const Strings full{"ping", "x", "x", "x"};
const std::string ping = R"({"id":5,"argv":["ping"]})";

std::string request(const Strings& words) {
    return InputDaemonWire::line(Request{.id = 5, .argv = words});
}

TEST(InputDaemonWire, ReadsARequest) {
    const std::pair<std::string, Request> cases[] = {
        {R"({"id":1,"argv":["ping"]})", {1, Strings{"ping"}}},
        {R"({"argv":["p\u0069ng","x"],"id":9007199254740991})",
         {9007199254740991, Strings{"ping", "x"}}},
        {R"({"id":5,"argv":["type-text","{\"text\":\"a/b\"}"]})",
         {5, Strings{"type-text", R"({"text":"a/b"})"}}},
        {request(full), {5, full}},
        {request({"ping", times(16384, "x")}), {5, Strings{"ping", times(16384, "x")}}},
        {ping + times(65536 - 24, " "), {5, Strings{"ping"}}},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(InputDaemonWire::parse(line), expected) << line.substr(0, 100);
    for (const std::string& verb :
         words("hotkey key-down key-up type-text mouse-click control release-all ping"))
        EXPECT_EQ(InputDaemonWire::parse(request({verb})), (Request{5, Strings{verb}}));
}

TEST(InputDaemonWire, AnInvalidRequestThatNamesItselfIsOwedAnAnswer) {
    const Strings longer{request(joined(full, {"x"})), request({"ping", times(16385, "x")}),
                         R"({"id":5})"};
    const Strings argv = words(R"(null "ping" {} [] ["reboot"] ["Ping"] ["ping\u0000"] ["ping",1]
                                  ["ping",null] [["ping"]] ["ping"],"x":1)");
    for (const std::string& line : joined(longer, each(R"({"id":5,"argv":#})", argv)))
        EXPECT_EQ(InputDaemonWire::parse(line), (Request{.id = 5, .argv = {}}))
            << line.substr(0, 100);
}

TEST(InputDaemonWire, WithoutAnIdentifierThereIsNoRequest) {
    const auto parse = InputDaemonWire::parse;
    expectRefused(parse, {"", "{}", "[]", "5", "[" + ping + "]", R"({"argv":["ping"]})", ping + "x",
                          changed(ping, "ping", "\xFF"), ping + times(65537 - 24, " ")});
    expectRefused(parse, R"({"id":#,"argv":["ping"]})",
                  words(R"(0 -5 9007199254740992 9223372036854775808 5.0 5e0 true "5" null 5,"id":5
                           5,"x":1e999)"));
}

TEST(InputDaemonWire, WritesLinesWithSortedKeysAndPlainSlashes) {
    EXPECT_EQ(InputDaemonWire::ready(),
              R"({"protocol":1,"type":"ready","verbs":["hotkey","key-down","key-up","type-text",)"
              R"("mouse-click","control","release-all","ping"]})");
    EXPECT_EQ(InputDaemonWire::response(7, 0), R"({"code":0,"id":7})");
    EXPECT_EQ(InputDaemonWire::response(7, 0, "x"), R"({"code":0,"id":7})");
    EXPECT_EQ(InputDaemonWire::response(7, 2), R"({"code":2,"id":7})");
    EXPECT_EQ(InputDaemonWire::response(7, INT32_MIN, "no/\"\n\xFF"),
              "{\"code\":-2147483648,\"error\":\"no/\\\"\\n\uFFFD\",\"id\":7}");
    EXPECT_EQ(InputDaemonWire::response(7, 2, ""), R"({"code":2,"error":"","id":7})");
    EXPECT_EQ(InputDaemonWire::line(std::map<std::string, double>{{"b/", 1.5}, {"a", 800}}),
              R"({"a":800,"b/":1.5})");
    EXPECT_EQ(InputDaemonWire::line(std::map<std::string, double>{{"a", HUGE_VAL}}), "{}");
}

TEST(InputDaemonWire, CutsAnErrorTextBetweenCharacters) {
    const std::string kept = times(2000, "e\u0301");
    EXPECT_EQ(InputDaemonWire::response(7, 2, kept + "x"),
              R"({"code":2,"error":")" + kept + R"(","id":7})");
}

TEST(InputDaemonWire, ServesWhatDoesNotEndTheSession) {
    for (const ControlCommand::Kind kind : allCases<ControlCommand::Kind>) {
        const std::string_view word = rawText(kind);
        const bool ends =
            word == "lock" || word == "sleep" || word == "shutdown" || word == "restart";
        EXPECT_EQ(InputDaemonWire::serves({.kind = kind}), !ends) << word;
    }
}

TEST(InputDaemonWire, ReadsWhichKeysToRelease) {
    const auto keysOf = [](const std::string& argument) {
        return InputDaemonWire::releaseKeys(Strings{"release-all", argument});
    };
    EXPECT_THAT(InputDaemonWire::releaseKeys({}), Optional(IsEmpty()));
    EXPECT_THAT(InputDaemonWire::releaseKeys(Strings{"release-all"}), Optional(IsEmpty()));
    EXPECT_THAT(keysOf("[]"), Optional(IsEmpty()));
    EXPECT_THAT(keysOf(R"(["cmd","shift","f21","","W "])"), Optional(IsEmpty()));
    EXPECT_THAT(keysOf(R"(["W","x","SPACE","w","cmd","\\"])"),
                Optional(ElementsAre("w", "x", "space", "w", "\\")));

    const std::string most = "[\"a\"" + times(15, ",\"cmd\"");
    const std::string longest = "[\"a\"" + times(1019, " ");
    EXPECT_THAT(keysOf(most + "]"), Optional(ElementsAre("a")));
    EXPECT_THAT(keysOf(longest + "]"), Optional(ElementsAre("a")));
    expectRefused(keysOf, {"", "{}", "\"a\"", "[\"a\",1]", "[null]", "[[\"a\"]]", "[\"a\"]]",
                           "[\"\xFF\"]", most + ",\"cmd\"]", longest + " ]"});
    EXPECT_FALSE(InputDaemonWire::releaseKeys(Strings{"release-all", "[]", ""}));
}

} // namespace
} // namespace velmo
