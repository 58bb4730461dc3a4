#include "core/input/InputDaemonWire.h"

#include "core/support/Text.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using InputDaemonWire::Request;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using Argv = std::vector<std::string>;

Argv argv(std::size_t count) {
    Argv words(count, "x");
    words.front() = "ping";
    return words;
}

std::string request(const Argv& words) {
    return InputDaemonWire::line(Request{.id = 5, .argv = words});
}

TEST(InputDaemonWire, ReadsARequest) {
    const std::pair<std::string, Request> cases[] = {
        {R"({"id":1,"argv":["ping"]})", {1, Argv{"ping"}}},
        {R"({"argv":["p\u0069ng","x"],"id":9007199254740991})",
         {9007199254740991, Argv{"ping", "x"}}},
        {R"({"id":5,"argv":["type-text","{\"text\":\"a/b\"}"]})",
         {5, Argv{"type-text", R"({"text":"a/b"})"}}},
        {request(argv(4)), {5, argv(4)}},
        {request({"ping", std::string(16384, 'x')}), {5, Argv{"ping", std::string(16384, 'x')}}},
        {R"({"id":5,"argv":["ping",")" + std::string(1, ' ') + R"("]})"
             + std::string(65536 - 28, ' '),
         {5, Argv{"ping", " "}}},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(InputDaemonWire::parse(line), expected) << line.substr(0, 100);
    for (const char* verb : {"hotkey", "key-down", "key-up", "type-text", "mouse-click", "control",
                             "release-all", "ping"})
        EXPECT_EQ(InputDaemonWire::parse(request({verb})), (Request{5, Argv{verb}}));
}

TEST(InputDaemonWire, AnInvalidRequestThatNamesItselfIsOwedAnAnswer) {
    const std::string cases[] = {
        R"({"id":5})",
        R"({"id":5,"argv":null})",
        R"({"id":5,"argv":"ping"})",
        R"({"id":5,"argv":{}})",
        R"({"id":5,"argv":[]})",
        R"({"id":5,"argv":["reboot"]})",
        R"({"id":5,"argv":["Ping"]})",
        R"({"id":5,"argv":["ping\u0000"]})",
        R"({"id":5,"argv":["ping",1]})",
        R"({"id":5,"argv":["ping",null]})",
        R"({"id":5,"argv":[["ping"]]})",
        R"({"id":5,"argv":["ping"],"x":1})",
        request(argv(5)),
        request({"ping", std::string(16385, 'x')}),
    };
    for (const std::string& line : cases)
        EXPECT_EQ(InputDaemonWire::parse(line), (Request{.id = 5, .argv = {}}))
            << line.substr(0, 100);
}

TEST(InputDaemonWire, WithoutAnIdentifierThereIsNoRequest) {
    const std::string cases[] = {
        "",
        "{}",
        "[]",
        "5",
        R"([{"id":5,"argv":["ping"]}])",
        R"({"argv":["ping"]})",
        R"({"id":0,"argv":["ping"]})",
        R"({"id":-5,"argv":["ping"]})",
        R"({"id":9007199254740992,"argv":["ping"]})",
        R"({"id":9223372036854775808,"argv":["ping"]})",
        R"({"id":5.0,"argv":["ping"]})",
        R"({"id":5e0,"argv":["ping"]})",
        R"({"id":true,"argv":["ping"]})",
        R"({"id":"5","argv":["ping"]})",
        R"({"id":null,"argv":["ping"]})",
        R"({"id":5,"id":5,"argv":["ping"]})",
        R"({"id":5,"argv":["ping"]}x)",
        R"({"id":5,"argv":["ping"],"x":1e999})",
        "{\"id\":5,\"argv\":[\"ping\",\"\xFF\"]}",
        R"({"id":5,"argv":["ping"]})" + std::string(65537 - 24, ' '),
    };
    for (const std::string& line : cases)
        EXPECT_FALSE(InputDaemonWire::parse(line)) << line.substr(0, 100);
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
    const std::string accented = "e\u0301";
    std::string kept;
    for (int i = 0; i < 2000; ++i)
        kept += accented;
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
        return InputDaemonWire::releaseKeys(Argv{"release-all", argument});
    };
    EXPECT_THAT(InputDaemonWire::releaseKeys(Argv{}), Optional(IsEmpty()));
    EXPECT_THAT(InputDaemonWire::releaseKeys(Argv{"release-all"}), Optional(IsEmpty()));
    EXPECT_THAT(keysOf("[]"), Optional(IsEmpty()));
    EXPECT_THAT(keysOf(R"(["cmd","shift","f21","","W "])"), Optional(IsEmpty()));
    EXPECT_THAT(keysOf(R"(["W","x","SPACE","w","cmd","\\"])"),
                Optional(ElementsAre("w", "x", "space", "w", "\\")));

    const auto names = [](int count) {
        std::string list;
        for (int i = 0; i < count; ++i)
            list += ",\"cmd\"";
        return "[\"a\"" + list + "]";
    };
    EXPECT_THAT(keysOf(names(15)), Optional(ElementsAre("a")));
    EXPECT_THAT(keysOf("[\"a\"" + std::string(1019, ' ') + "]"), Optional(ElementsAre("a")));
    const std::string refused[] = {
        "",          "{}",       "\"a\"",      "[\"a\",1]", "[null]",
        "[[\"a\"]]", "[\"a\"]]", "[\"\xFF\"]", names(16),   "[\"a\"" + std::string(1020, ' ') + "]",
    };
    for (const std::string& argument : refused)
        EXPECT_FALSE(keysOf(argument)) << argument.substr(0, 100);
    EXPECT_FALSE(InputDaemonWire::releaseKeys(Argv{"release-all", "[]", ""}));
}

RC_GTEST_PROP(InputDaemonWire, AnyBytesGiveAnAnswerAndEveryRequestReadsBack,
              (const std::string& bytes)) {
    InputDaemonWire::parse(bytes);
    InputDaemonWire::releaseKeys(Argv{"release-all", bytes});
    RC_ASSERT(InputDaemonWire::parse(request({"ping", bytes}))
              == (Request{5, Argv{"ping", Text::repaired(bytes)}}));
}

} // namespace
} // namespace velmo
