#include "core/input/TypeTextRequest.h"
#include "core/input/TypingSafety.h"
#include "core/support/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

std::string withText(const std::string& text) {
    return "{\"text\":\"" + text + "\"}";
}

std::string emoji(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "😀";
    return text;
}

TEST(TypeTextRequest, ReadsTextThatMayBeTyped) {
    const std::pair<std::string, TypeTextRequest> cases[] = {
        {R"({"text":"hi"})", {"hi", false}},
        {R"({"enter":true,"te\u0078t":"hi"})", {"hi", true}},
        {R"({"text":"hi","enter":false})", {"hi", false}},
        {withText(R"(a\tb\nc\r)"), {"a\tb\nc\r"}},
        {withText(R"(\\u001b)"), {"\\u001b"}},
        {withText("\u0080\u00E9\u2028"), {"\u0080\u00E9\u2028"}},
        {withText(std::string(500, 'x')), {std::string(500, 'x')}},
        {withText(emoji(250)), {emoji(250)}},
        {withText("x") + std::string(8192 - 12, ' '), {"x"}},
    };
    for (const auto& [json, request] : cases)
        EXPECT_EQ(TypeTextRequest::parse(json), request) << json;
}

TEST(TypeTextRequest, RefusesEverythingElse) {
    const std::string cases[] = {
        "",
        "[]",
        "{}",
        "\"hi\"",
        withText(""),
        R"({"text":null})",
        R"({"text":5})",
        R"({"text":["hi"]})",
        R"({"enter":true})",
        R"({"text":"hi","enter":1})",
        R"({"text":"hi","enter":0})",
        R"({"text":"hi","enter":"true"})",
        R"({"text":"hi","enter":null})",
        R"({"text":"hi","x":true})",
        R"({"text":"hi","Enter":true})",
        R"({"text":"hi","text":"ho"})",
        R"({"text":"hi"}x)",
        withText(R"(\u001b)"),
        withText(R"(\u0000)"),
        withText(R"(\u000b)"),
        withText(R"(\f)"),
        withText(R"(\u001f)"),
        withText("\x7F"),
        withText(R"(\ud83d)"),
        withText("\xFF"),
        withText("\n"),
        withText(std::string(501, 'x')),
        withText(emoji(250) + "x"),
        withText("x") + std::string(8193 - 12, ' '),
    };
    for (const std::string& json : cases)
        EXPECT_FALSE(TypeTextRequest::parse(json)) << testing::PrintToString(json);
}

RC_GTEST_PROP(TypeTextRequest, WhatIsAcceptedGoesRound,
              (const std::u32string& scalars, const std::string& bytes, bool enter)) {
    TypeTextRequest::parse(bytes);
    TypeTextRequest::parse(withText(bytes));
    TypeTextRequest request{.text = "x", .enter = enter};
    for (const char32_t scalar : scalars)
        Text::append(request.text, U' ' + scalar % 0x1000);
    const bool typeable = !request.text.contains('\x7F');
    const auto parsed = TypeTextRequest::parse(encodeJson(request).value());
    RC_ASSERT(parsed == (typeable ? std::optional(request) : std::nullopt));
}

TEST(TypingSafety, NeverIntoAPasswordFieldAndNeverBlindly) {
    using TypingSafety::allowed, TypingSafety::passwordField, TypingSafety::unknownFocus;

    struct Case {
        bool secureInput;
        std::optional<TypingSafety::Focus> focus;
        TypingSafety::Verdict verdict;
        TypingSafety::Flags flags;
    };

    const Case cases[] = {
        {true, {}, passwordField, {false, true}},
        {true, {{"AXTextField", ""}}, passwordField, {true, true}},
        {true, {{"AXButton", ""}}, passwordField, {true, true}},
        {false, {}, unknownFocus, {false, false}},
        {false, {{"AXTextField", ""}}, allowed, {true, false}},
        {false, {{"AXTextArea", "x"}}, allowed, {true, false}},
        {false, {{"AXComboBox", ""}}, allowed, {true, false}},
        {false, {{"AXSearchField", ""}}, allowed, {true, false}},
        {false, {{"AXWebArea", "", true}}, allowed, {true, false}},
        {false, {{"AXWebArea", "", false}}, unknownFocus, {false, false}},
        {false, {{"AXGroup", "AXSearchField"}}, unknownFocus, {false, false}},
        {false, {{"axtextfield", ""}}, unknownFocus, {false, false}},
        {false, {{"AXTextField", "AXSecureTextField", true}}, passwordField, {true, true}},
        {false, {{"AXSecureTextField", "", true}}, passwordField, {true, true}},
        {false, {{"AXGroup", "AXSecureTextField"}}, passwordField, {true, true}},
    };
    int row = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(TypingSafety::decide(c.secureInput, c.focus), c.verdict) << "row " << row;
        EXPECT_EQ(TypingSafety::focusFlags(c.secureInput, c.focus), c.flags) << "row " << row;
        ++row;
    }
}

} // namespace
} // namespace velmo
