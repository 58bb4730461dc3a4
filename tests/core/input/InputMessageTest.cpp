#include "core/input/InputMessage.h"

#include "core/support/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

using Message = InputMessage;

std::string times(std::size_t count, const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

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
        {textMessage(times(1024, "x")), Message::Text{times(1024, "x"), "1"}},
        {textMessage(times(512, "😀")), Message::Text{times(512, "😀"), "1"}},
        {textMessage(times(1024, "\u20AC")), Message::Text{times(1024, "\u20AC"), "1"}},
        {R"({"type":"key","key":"ArrowLeft","target":"7"})", Message::Key{"ArrowLeft", "7"}},
        {R"({"type":"gesture","gesture":"look-up"})", Gesture::lookUp},
        {R"({"ty\u0070e":"ping","type2":null})", Message::Ping()},
        {R"( {"type":"release"} )", Message::Release()},
        {R"({"type":"focus","down":1})", Message::Focus()},
        {R"({"type":"ping"})" + times(8192 - 15, " "), Message::Ping()},
    };
    for (const auto& [line, content] : cases)
        EXPECT_EQ(InputMessage::decode(line), InputMessage{content}) << line;
}

TEST(InputMessage, ReadsEveryKeyAndGestureByItsExactName) {
    for (const char* name : {"Backspace", "Delete", "Enter", "Tab", "Escape", "ArrowLeft",
                             "ArrowRight", "ArrowUp", "ArrowDown", "Home", "End"}) {
        const std::string line =
            R"({"type":"key","target":"1","key":")" + std::string(name) + "\"}";
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
    const std::string cases[] = {
        "",
        "{}",
        "[]",
        "null",
        "\"ping\"",
        R"([{"type":"ping"}])",
        R"({"type":"Ping"})",
        R"({"type":"ping "})",
        R"({"type":null})",
        R"({"type":["ping"]})",
        R"({"type":"ping\u0000"})",
        R"({"type":"ping","type":"ping"})",
        R"({"type":"ping","x":1e400})",
        R"({"type":"ping","x":18446744073709551616})",
        R"({"type":"ping"}{})",
        "{\"type\":\"ping\"}" + std::string(1, '\0'),
        "{\"type\":\"ping\",\"x\":\"\xFF\"}",
        "\xEF\xBB\xBF{\"type\":\"ping\"}",
        "{\"type\":\"ping\",\"x\":" + times(1100, "[") + times(1100, "]") + "}",
        R"({"type":"ping"})" + times(8193 - 15, " "),
        R"({"type":"move","dx":2049,"dy":0})",
        R"({"type":"move","dx":0,"dy":-2049})",
        R"({"type":"move","dx":-9223372036854775808,"dy":0})",
        R"({"type":"move","dx":9223372036854775808,"dy":0})",
        R"({"type":"move","dx":true,"dy":0})",
        R"({"type":"move","dx":1.5,"dy":0})",
        R"({"type":"move","dx":1.0,"dy":0})",
        R"({"type":"move","dx":"1","dy":0})",
        R"({"type":"move","dx":null,"dy":0})",
        R"({"type":"move","dx":1})",
        R"({"type":"scroll","dy":1})",
        R"({"type":"scroll","dx":1,"dy":1e0})",
        R"({"type":"zoom"})",
        R"({"type":"zoom","steps":0})",
        R"({"type":"zoom","steps":9})",
        R"({"type":"zoom","steps":-9})",
        R"({"type":"zoom","steps":true})",
        R"({"type":"zoom","steps":1.0})",
        R"({"type":"button","button":"middle","down":true})",
        R"({"type":"button","button":"Left","down":true})",
        R"({"type":"button","button":"left","down":1})",
        R"({"type":"button","button":"left","down":"true"})",
        R"({"type":"button","button":"left"})",
        R"({"type":"button","down":true})",
        textMessage(""),
        textMessage(times(1025, "x")),
        textMessage(times(512, "😀") + "x"),
        textMessage("\\ud800"),
        R"({"type":"text","text":"x"})",
        R"({"type":"text","target":"1"})",
        R"({"type":"text","text":1,"target":"1"})",
        R"({"type":"key","key":"Return","target":"1"})",
        R"({"type":"key","key":"","target":"1"})",
        R"({"type":"key","key":"Enter"})",
        R"({"type":"key","target":"1"})",
        R"({"type":"gesture"})",
        R"({"type":"gesture","gesture":"apps","x":1})",
        R"({"type":"gesture","gesture":"apps","gesture":"apps"})",
        R"({"type":"gesture","gesture":"Apps"})",
        R"({"type":"gesture","gesture":"appWindows"})",
        R"({"type":"gesture","gesture":5})",
    };
    for (const std::string& line : cases)
        EXPECT_FALSE(InputMessage::decode(line)) << line;

    for (const char* target :
         {"\"\"", "\"0\"", "\"0123\"", "\"12345678901234567\"", "\"+1\"", "\"-1\"", "\" 1\"",
          "\"12\\n\"", "\"1\\u0000\"", "\"1a\"", "\"\u0661\"", "12", "null", "true"})
        for (const char* rest : {R"("type":"text","text":"x")", R"("type":"key","key":"Enter")"}) {
            const std::string line = "{" + std::string(rest) + ",\"target\":" + target + "}";
            EXPECT_FALSE(InputMessage::decode(line)) << line;
        }
}

RC_GTEST_PROP(InputMessage, AnyBytesGiveAnAnswer, (const std::string& bytes)) {
    InputMessage::decode(bytes);
    const auto message = InputMessage::decode(textMessage(bytes));
    if (message)
        RC_ASSERT(Text::isValidUtf8(std::get<Message::Text>(message->content).text));
}

} // namespace
} // namespace velmo
