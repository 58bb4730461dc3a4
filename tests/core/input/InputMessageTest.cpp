#include "core/input/InputMessage.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using Message = InputMessage;

std::string textMessage(const std::string& text) {
    return R"({"type":"text","target":"1","text":")" + text + "\"}";
}

TEST(InputMessage, ReadsEveryMessageWithinItsLimits) {
    const std::pair<std::string, Message::Content> cases[] = {
        {R"({"type":"move","dx":2048,"dy":-2048})", Message::Move{2048, -2048}},
        {R"({"dy":-0,"dx":1,"type":"move","x":[{}]})", Message::Move{1, 0}},
        {R"({"type":"scroll","dx":0,"dy":7})", Message::Scroll{0, 7}},
        {R"({"type":"zoom","steps":-8})", Message::Zoom{-8}},
        {R"({"type":"zoom","steps":1})", Message::Zoom{1}},
        {R"({"type":"button","button":"left","down":true})", Message::Button{false, true}},
        {R"({"type":"button","button":"right","down":false})", Message::Button{true, false}},
        {R"({"type":"text","text":"\u001b\u0000\u007f","target":"1234567890123456"})",
         Message::Text{std::string("\x1B\0\x7F", 3), "1234567890123456"}},
        {textMessage(times(1024, "\u20AC")), Message::Text{times(1024, "\u20AC"), "1"}},
        {textMessage(times(512, "😀")), Message::Text{times(512, "😀"), "1"}},
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
        EXPECT_EQ(InputMessage::decode(line), (InputMessage{Message::Key{name, "1"}})) << line;
        EXPECT_FALSE(InputMessage::decode(Text::lowercased(line))) << line;
    }
    const std::pair<const char*, Gesture> gestures[] = {
        {"mission-control", Gesture::missionControl},
        {"app-windows", Gesture::appWindows},
        {"space-next", Gesture::spaceNext},
        {"space-previous", Gesture::spacePrevious},
        {"show-desktop", Gesture::showDesktop},
        {"apps", Gesture::apps},
        {"look-up", Gesture::lookUp},
        {"notification-center", Gesture::notificationCenter},
    };
    for (const auto& [name, gesture] : gestures) {
        const std::string line = R"({"type":"gesture","gesture":")" + std::string(name) + "\"}";
        EXPECT_EQ(InputMessage::decode(line), InputMessage{gesture}) << line;
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
    expectRefused(
        parse, R"({"type":"ping","x":#})",
        {"1e400", "18446744073709551616", "\"\xFF\"", times(1100, "[") + times(1100, "]")});
    const Strings beyond = words(R"(2049 -2049 -9223372036854775808 9223372036854775808 true 1.5 1.0
                                    1e0 "1" null)");
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

} // namespace
} // namespace velmo
