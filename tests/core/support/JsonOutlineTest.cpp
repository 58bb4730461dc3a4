#include "core/support/JsonOutline.h"

#include "tests/Texts.h"

#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

const std::string quoted = '"' + std::string(20000, 'x') + '"';

/// The member "a", however it is held; absent when the whole is refused.
std::optional<std::string> memberA(std::string_view json) {
    const auto outline = JsonOutline::parse(json, {"a", "b"});
    const auto held = outline ? outline->object().member("a") : std::nullopt;
    const auto inlineText = held.and_then(&JsonValue::text);
    const auto longText = inlineText ? outline->longText("a") : std::nullopt;
    if (!longText)
        return inlineText.transform([](std::string_view text) { return std::string(text); });
    std::string text;
    const bool whole = longText->read([&](std::string_view piece) {
        EXPECT_LE(piece.size(), 16100U);
        text += piece;
        return true;
    });
    EXPECT_LE(text.size(), longText->spelledLength());
    return whole ? std::optional(text) : std::nullopt;
}

std::optional<std::string> memberAOfDocument(std::string_view json) {
    const auto document = JsonDocument::parse(json);
    const auto object = document.and_then(&JsonDocument::object);
    const auto member = object ? object->member("a") : std::nullopt;
    const auto text = member.and_then(&JsonValue::text);
    return text.transform([](std::string_view view) { return std::string(view); });
}

TEST(JsonOutline, LeavesOutLongTextsOfTheNamedMembersOfTheRootOnly) {
    // "#" stands for a long text.
    const std::pair<const char*, bool> cases[] = {
        {R"({"a":#})", true},
        {"{ \"c\" : [1, {\"b\": \":\"}], \"a\" \n\t\r : #, \"d\":\"x\"}", true},
        {R"({"a":"short"})", false},
        {R"({"\u0061":#})", false},
        {R"({"a":1,#:2})", false},
        {R"({"c":{"a":#}})", false},
        {R"({"c":[#],"a":"\"{"})", false},
        {R"({"c":#})", false},
    };
    for (const auto& [frame, leftOut] : cases) {
        const std::string json = Text::replacedAll(frame, "#", quoted);
        const auto outline = JsonOutline::parse(json, {"a", "b"});
        ASSERT_TRUE(outline) << frame;
        EXPECT_EQ(outline->longText("a").has_value(), leftOut) << frame;
        EXPECT_FALSE(outline->longText("b")) << frame;
        EXPECT_EQ(memberA(json), memberAOfDocument(json)) << frame;
    }
}

TEST(JsonOutline, RefusesWhatADocumentRefuses) {
    expectRefused(
        [](const std::string& frame) {
            return JsonOutline::parse(Text::replacedAll(frame, "#", quoted), {"a", "b"});
        },
        joined({"", "\xEF\xBB\xBF{\"a\":#}"},
               words(R"(# [#] ["a":#] {"a":# {"a":"xx {"a":"x\"} {"a":#,} {"a":#,"a":"b"}
                        {"a":"b","\u0061":#} {"a":#,"a":#} {"a":#}} {"a":#,"x":tru} {"a"#} {:#})")));
}

TEST(JsonOutline, EndsWhenTheReaderHasEnough) {
    const std::string json = R"({"a":")" + times(100000, "x") + "\"}";
    std::size_t taken = 0;
    EXPECT_FALSE(JsonOutline::parse(json, {"a"})->longText("a")->read([&](std::string_view piece) {
        return (taken += piece.size()) < 50000;
    }));
    EXPECT_LT(taken, 100000U);
}

/// Parts of texts, among them what is no JSON, repeated to several pieces.
RC_GTEST_PROP(JsonOutline, ReadsAndRefusesAsADocumentDoes, ()) {
    const Strings good = words(R"(x \/ \\ \" \n \u00e9 é 漢 😀 \u0000 \uD83D\uDE00 \\uDE00 {\":[)"
                               " \x7F");
    const Strings bad{"\\uD83D", "\\uDE00", "\\x",          "\\u12",  "\n",
                      "\xC3",    "\xA9",    "\xED\xA0\x80", {"\0", 1}};
    std::string text;
    const auto repeat = [&](const std::string& part) {
        text += times(*rc::gen::inRange<std::size_t>(1, 40000 / part.size()), part);
    };
    for (auto runs = *rc::gen::inRange(1, 6); runs > 0; --runs)
        repeat(*rc::gen::elementOf(good));
    if (*rc::gen::inRange(0, 3) == 0) {
        text += *rc::gen::elementOf(bad);
        repeat(*rc::gen::elementOf(good));
    }
    const std::string json = "{\"a\":\"" + text + "\"}";
    RC_ASSERT(memberA(json) == memberAOfDocument(json));
}

} // namespace
} // namespace velmo
