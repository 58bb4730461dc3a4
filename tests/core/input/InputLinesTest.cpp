#include "core/input/InputDaemonWire.h"
#include "core/input/InputMessage.h"
#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmo {
namespace {

using Message = InputMessage;

std::string textMessage(const std::string& text) {
    return R"({"type":"text","target":"1","text":")" + text + "\"}";
}

TEST(InputMessage, ReadsEveryMessageWithinItsLimits) {
    const std::pair<std::string, Message::Content> cases[] = {
        {R"({"type":"move","dx":2048,"dy":-2048})", Message::Move{.dx = 2048, .dy = -2048}},
        {R"({"dy":-0,"dx":1,"type":"move","x":[{}]})", Message::Move{.dx = 1}},
        {R"({"type":"scroll","dx":0,"dy":7})", Message::Scroll{.dy = 7}},
        {R"({"type":"zoom","steps":-8})", Message::Zoom{-8}},
        {R"({"type":"zoom","steps":1})", Message::Zoom{1}},
        {R"({"type":"button","button":"left","down":true})", Message::Button{.down = true}},
        {R"({"type":"button","button":"right","down":false})", Message::Button{.right = true}},
        {R"({"type":"text","text":"\u001b\u0000\u007f","target":"1234567890123456"})",
         Message::Text{.text = {"\x1B\0\x7F", 3}, .target = "1234567890123456"}},
        {textMessage(times(512, "😀")), Message::Text{.text = times(512, "😀"), .target = "1"}},
        {R"({"ty\u0070e":"ping","type2":null})", Message::Ping()},
        {R"( {"type":"release"} )", Message::Release()},
        {R"({"type":"focus","down":1})", Message::Focus()},
        {R"({"type":"ping"})" + times(8192 - 15, " "), Message::Ping()},
    };
    for (const auto& [line, content] : cases)
        EXPECT_EQ(InputMessage::decode(line), InputMessage{content}) << line;
}

TEST(InputMessage, ReadsEveryKeyAndGestureByItsExactName) {
    for (const std::string& name : words("Backspace Delete Enter Tab Escape ArrowLeft ArrowRight "
                                         "ArrowUp ArrowDown Home End")) {
        const std::string line = R"({"type":"key","target":"1","key":")" + name + "\"}";
        EXPECT_EQ(InputMessage::decode(line),
                  (InputMessage{Message::Key{.name = name, .target = "1"}}))
            << line;
        EXPECT_FALSE(InputMessage::decode(Text::lowercased(line))) << line;
    }
    const Strings gestures = words("mission-control app-windows space-next space-previous "
                                   "show-desktop apps look-up notification-center");
    for (std::size_t i = 0; i < gestures.size(); ++i) {
        const std::string line = R"({"type":"gesture","gesture":")" + gestures[i] + "\"}";
        EXPECT_EQ(InputMessage::decode(line), InputMessage{allCases<Gesture>[i]}) << line;
    }
}

TEST(InputMessage, RefusesEverythingElse) {
    const auto parse = InputMessage::decode;
    expectRefused(parse,
                  {"", "{}", "[]", "null", "\"ping\"", R"([{"type":"ping"}])",
                   R"({"type":"ping"})" + times(8193 - 15, " "),
                   R"({"type":"ping"})" + std::string(1, '\0'), "\xEF\xBB\xBF{\"type\":\"ping\"}"});
    expectRefused(parse, R"({"type":#})",
                  {R"("Ping")", R"("ping ")", "null", R"(["ping"])", R"("ping\u0000")",
                   R"("ping","type":"ping")", R"("ping"}{)"});
    expectRefused(parse, R"({"type":"ping","x":#})",
                  {"01e400", "\"\xFF\"", times(1100, "[") + times(1100, "]")});
    EXPECT_TRUE(parse(R"({"type":"ping","x":1e400})")); // unknown members are ignored
    const Strings beyond = words(R"(2049 -2049 -9223372036854775808 9223372036854775808 true 1.5 1.0
                                    1e0 1e400 18446744073709551616 "1" null)");
    expectRefused(parse, R"({"type":"move","dx":#,"dy":0})", beyond);
    expectRefused(parse, R"({"type":"scroll","dx":0,"dy":#})", beyond);
    expectRefused(parse, R"({"type":#})",
                  words(R"("move","dx":1 "scroll","dy":1 "zoom" "text","text":"x"
                                     "text","target":"1" "text","text":1,"target":"1"
                                     "key","key":"Enter" "key","target":"1" "gesture")"));
    expectRefused(parse, R"({"type":"zoom","steps":#})", words("0 9 -9 true 1.0"));
    expectRefused(parse, R"({"type":"button",#})",
                  words(R"("button":"middle","down":true "button":"Left","down":true
                    "button":"left","down":1 "button":"left","down":"true" "button":"left"
                    "down":true)"));
    expectRefused(parse, textMessage("#"),
                  {"", times(1025, "x"), times(512, "😀") + "x", "\\ud800", "\xFF"});
    expectRefused(parse, R"({"type":"key","target":"1","key":#})", words(R"("Return" "")"));
    expectRefused(parse, R"({"type":"gesture","gesture":#})",
                  words(R"("apps","x":1 "apps","gesture":"apps" "Apps" "appWindows" 5)"));
    for (const char* rest : {R"("type":"text","text":"x")", R"("type":"key","key":"Enter")"})
        expectRefused(parse, "{" + std::string(rest) + ",\"target\":#}",
                      {"\"\"", "\"0\"", "\"0123\"", "\"12345678901234567\"", "\"+1\"", "\"-1\"",
                       "\" 1\"", "\"12\\n\"", "\"1\\u0000\"", "\"1a\"", "\"\u0661\"", "12", "null",
                       "true"});
}

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
        {R"({"id":1,"argv":["ping"]})", {.id = 1, .argv = Strings{"ping"}}},
        {R"({"argv":["p\u0069ng","x"],"id":9007199254740991})",
         {.id = 9007199254740991, .argv = Strings{"ping", "x"}}},
        {ping + times(65536 - 24, " "), {.id = 5, .argv = Strings{"ping"}}},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(InputDaemonWire::parse(line), expected) << line.substr(0, 100);
    for (const Strings& argv : {full, Strings{"ping", times(16384, "x")}})
        EXPECT_EQ(InputDaemonWire::parse(request(argv))->argv, argv);
    for (const std::string& verb :
         words("hotkey key-down key-up type-text mouse-click control release-all ping"))
        EXPECT_EQ(InputDaemonWire::parse(request({verb}))->argv, Strings{verb});
}

TEST(InputDaemonWire, KeepsTheIdentifierOfAnInvalidRequest) {
    const Strings longer{request(joined(full, {"x"})), request({"ping", times(16385, "x")}),
                         R"({"id":5})"};
    const Strings argv = words(R"(null "ping" {} [] ["reboot"] ["Ping"] ["ping\u0000"] ["ping",1]
                                  ["ping",null] [["ping"]] ["ping"],"x":1 ["ping"],"x":1e999)");
    for (const std::string& line : joined(longer, each(R"({"id":5,"argv":#})", argv)))
        EXPECT_EQ(InputDaemonWire::parse(line), (Request{.id = 5, .argv = {}}))
            << line.substr(0, 100);
}

TEST(InputDaemonWire, RefusesALineWithoutAValidIdentifier) {
    const auto parse = InputDaemonWire::parse;
    expectRefused(parse, {"", "{}", "[]", "5", "[" + ping + "]", R"({"argv":["ping"]})", ping + "x",
                          changed(ping, "ping", "\xFF"), ping + times(65537 - 24, " ")});
    expectRefused(
        parse, R"({"id":#,"argv":["ping"]})",
        words(R"(0 -5 9007199254740992 9223372036854775808 5.0 5e0 true "5" null 5,"id":5 1e999)"));
}

TEST(InputDaemonWire, WritesLinesWithSortedKeysAndPlainSlashes) {
    EXPECT_EQ(InputDaemonWire::ready(),
              R"({"protocol":1,"type":"ready","verbs":["hotkey","key-down","key-up","type-text",)"
              R"("mouse-click","control","release-all","ping"]})");
    EXPECT_EQ(InputDaemonWire::response(7, 0, "x"), R"({"code":0,"id":7})");
    EXPECT_EQ(InputDaemonWire::response(7, 2), R"({"code":2,"id":7})");
    EXPECT_EQ(InputDaemonWire::response(7, INT32_MIN, "no/\"\n\xFF"),
              "{\"code\":-2147483648,\"error\":\"no/\\\"\\n\uFFFD\",\"id\":7}");
    EXPECT_EQ(InputDaemonWire::response(7, 2, ""), R"({"code":2,"error":"","id":7})");
    EXPECT_EQ(InputDaemonWire::line(std::map<std::string, double>{{"b/", 1.5}, {"a", 800}}),
              R"({"a":800,"b/":1.5})");
    EXPECT_EQ(InputDaemonWire::line(std::map<std::string, double>{{"a", HUGE_VAL}}), "{}");
    const std::string kept = times(2000, "e\u0301"); // of an error text, in characters
    EXPECT_EQ(InputDaemonWire::response(7, 2, kept + "x"),
              R"({"code":2,"error":")" + kept + R"(","id":7})");
}

TEST(InputDaemonWire, WritesRequestsThatTheDaemonReads) {
    const Strings argv{"hotkey", R"(["cmd","k"])"};
    const auto line = InputDaemonWire::request(7, {"hotkey", R"(["cmd","k"])"});
    EXPECT_EQ(line, R"({"argv":["hotkey","[\"cmd\",\"k\"]"],"id":7})");
    EXPECT_EQ(InputDaemonWire::parse(line.value()), (Request{.id = 7, .argv = argv}));
    for (const Strings& refused :
         {Strings{}, Strings{"reboot"}, Strings{"ping", "\xFF"}, Strings{"ping", times(16385, "x")},
          Strings{"ping", "1", "2", "3", "4"}, Strings(4, times(16384, "\""))})
        EXPECT_FALSE(InputDaemonWire::request(7, refused)) << refused.size();
    for (const std::int64_t id : {std::int64_t{0}, std::int64_t{1} << 53})
        EXPECT_FALSE(InputDaemonWire::request(id, argv)) << id;
}

TEST(InputDaemonWire, TheHostReadsWhatTheDaemonWrites) {
    using InputDaemonWire::Response;
    const auto ready = InputDaemonWire::parseReady(InputDaemonWire::ready());
    ASSERT_TRUE(ready);
    EXPECT_EQ(ready->protocol, 1);
    EXPECT_TRUE(std::ranges::equal(ready->verbs, InputDaemonWire::verbs));
    EXPECT_EQ(InputDaemonWire::parseReady(R"({"type":"ready","protocol":2,"verbs":["x"],"y":1})"),
              (InputDaemonWire::Ready{.protocol = 2, .verbs = {"x"}}));
    expectRefused(InputDaemonWire::parseReady, {"", "[]", InputDaemonWire::response(1, 0)});
    expectRefused(InputDaemonWire::parseReady, "{#}",
                  words(R"("protocol":1,"verbs":[] "type":"Ready","protocol":1,"verbs":[]
                           "type":"ready","verbs":[] "type":"ready","protocol":1
                           "type":"ready","protocol":true,"verbs":[]
                           "type":"ready","protocol":1,"verbs":["ping",1])"));

    const auto answer = InputDaemonWire::parseResponse;
    EXPECT_EQ(answer(InputDaemonWire::response(7, 0, "x")), (Response{.id = 7}));
    EXPECT_EQ(answer(InputDaemonWire::response(7, INT32_MIN, "no")),
              (Response{.id = 7, .code = INT32_MIN, .error = "no"}));
    EXPECT_EQ(answer(R"({"id":9007199254740991,"code":3,"more":[]})"),
              (Response{.id = 9007199254740991, .code = 3}));
    expectRefused(answer, {"", "[]", "{}", InputDaemonWire::ready(), R"({"id":1,"code":0}x)"});
    expectRefused(answer, R"({"id":#})",
                  words(R"(0,"code":0 -1,"code":0 9007199254740992,"code":0 1.0,"code":0
                           "1","code":0 1 1,"code":2147483648 1,"code":true
                           1,"code":1,"error":5)"));
}

TEST(InputDaemonWire, ServesEveryCommandButLockSleepShutdownAndRestart) {
    constexpr std::string_view endings[] = {"lock", "sleep", "shutdown", "restart"};
    for (const ControlCommand::Kind kind : allCases<ControlCommand::Kind>) {
        const std::string_view word = rawText(kind);
        EXPECT_EQ(InputDaemonWire::serves({.kind = kind}), !Text::isOneOf(word, endings)) << word;
    }
}

TEST(InputDaemonWire, ReadsWhichKeysToRelease) {
    const auto keysOf = [](const std::string& argument) {
        return InputDaemonWire::releaseKeys(Strings{"release-all", argument});
    };
    EXPECT_THAT(InputDaemonWire::releaseKeys({}), Optional(IsEmpty()));
    EXPECT_THAT(InputDaemonWire::releaseKeys(Strings{"release-all"}), Optional(IsEmpty()));
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
