#include "core/input/TypeTextRequest.h"
#include "core/input/TypingSafety.h"
#include "tests/Texts.h"

#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

std::string withText(const std::string& text) {
    return "{\"text\":\"" + text + "\"}";
}

TEST(TypeTextRequest, ReadsTextThatMayBeTyped) {
    const std::pair<std::string, TypeTextRequest> cases[] = {
        {R"({"enter":true,"te\u0078t":"hi"})", {"hi", true}},
        {R"({"text":"hi","enter":false})", {"hi", false}},
        {withText(R"(a\tb\nc\r)"), {"a\tb\nc\r"}},
        {withText(R"(\\u001b)"), {"\\u001b"}},
        {withText("\u0080\u00E9\u2028"), {"\u0080\u00E9\u2028"}},
        {withText(times(250, "😀")), {times(250, "😀")}},
        {withText("x") + times(8192 - 12, " "), {"x"}},
    };
    for (const auto& [json, request] : cases)
        EXPECT_EQ(TypeTextRequest::parse(json), request) << json;
}

TEST(TypeTextRequest, RefusesEverythingElse) {
    const auto parse = TypeTextRequest::parse;
    expectRefused(
        parse, "#",
        {"", "[]", "{}", "\"hi\"", R"({"enter":true})", withText("x") + times(8193 - 12, " ")});
    expectRefused(parse, R"({"text":#})",
                  words(R"(null 5 ["hi"] "hi"}x "hi","enter":1 "hi","enter":0
                                     "hi","enter":"true" "hi","enter":null "hi","x":true
                                     "hi","Enter":true "hi","text":"ho")"));
    expectRefused(parse, withText("#"),
                  {"", R"(\u001b)", R"(\u0000)", R"(\u000b)", R"(\f)", R"(\u001f)", "\x7F",
                   R"(\ud83d)", "\xFF", "\n", times(501, "x"), times(250, "😀") + "x"});
}

RC_GTEST_PROP(TypeTextRequest, WhatMayBeTypedGoesRound,
              (const std::u32string& scalars, bool enter)) {
    TypeTextRequest request{.text = "x", .enter = enter};
    for (const char32_t scalar : scalars)
        Text::append(request.text, U' ' + scalar % 0x1000);
    const bool typeable = !request.text.contains('\x7F');
    const auto parsed = TypeTextRequest::parse(encodeJson(request).value());
    RC_ASSERT(parsed == (typeable ? std::optional(request) : std::nullopt));
}

TEST(TypingSafety, NeverIntoAPasswordFieldAndNeverBlindly) {
    using namespace TypingSafety;
    const auto expect = [](Verdict verdict, Flags flags, bool secureInput,
                           const std::vector<std::optional<Focus>>& rows) {
        for (const auto& focus : rows) {
            SCOPED_TRACE(focus ? focus->role + ", " + focus->subrole : "no focus");
            EXPECT_EQ(decide(secureInput, focus), verdict);
            EXPECT_EQ(focusFlags(secureInput, focus), flags);
        }
    };
    expect(passwordField, {false, true}, true, {std::nullopt});
    expect(passwordField, {true, true}, true, {{{"AXTextField", ""}}, {{"AXButton", ""}}});
    expect(passwordField, {true, true}, false,
           {{{"AXTextField", "AXSecureTextField", true}},
            {{"AXSecureTextField", "", true}},
            {{"AXGroup", "AXSecureTextField"}}});
    expect(allowed, {true, false}, false,
           {{{"AXTextField", ""}},
            {{"AXTextArea", "x"}},
            {{"AXComboBox", ""}},
            {{"AXSearchField", ""}},
            {{"AXWebArea", "", true}}});
    expect(unknownFocus, {false, false}, false,
           {std::nullopt,
            {{"AXWebArea", "", false}},
            {{"AXGroup", "AXSearchField"}},
            {{"axtextfield", ""}}});
}

} // namespace
} // namespace velmo
