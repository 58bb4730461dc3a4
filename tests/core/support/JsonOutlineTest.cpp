#include "core/support/JsonOutline.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace std::string_literals;

const std::string quoted = '"' + std::string(JsonOutline::maxInline + 1, 'x') + '"';

/// Returns the text of the member "a", whether inline or long; absent if the document is refused.
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

/// Puts texts that may and may not be cut at every place around the end of the first piece.
TEST(JsonOutline, AgreesWithADocumentHoweverTheTextIsCut) {
    Strings parts{"\\\\",
                  "\\\"",
                  "\\/",
                  "\\n",
                  "\\u00e9",
                  "\\u0000",
                  "\\\\uDE00",
                  "{\\\":[",
                  "\x7F",
                  "\u0080",
                  "\u2000",
                  "\U00010000",
                  "😀",
                  "\\uD83D\\uDE00\\uD83D\\uDE00",
                  // not valid JSON
                  "\\uD83D",
                  "\\uDE00",
                  "\\x",
                  "\\u12",
                  "\n",
                  "\xC3",
                  "\xA9",
                  "\xED\xA0\x80",
                  {"\0", 1}};
    for (const char d : {'d', 'D'}) {
        for (const char digit : "89abAB"s)
            parts.push_back("\\u"s + d + digit + "00\\udc00");
        for (const char digit : "cdefCDEF"s)
            parts.push_back("\\ud800\\u"s + d + digit + "00");
    }
    for (const std::string& part : parts) {
        for (std::size_t offset = 0; offset <= 13; ++offset) {
            const std::string text = times(16000 - offset, "x") + part + times(2000, "y");
            const std::string json = "{\"a\":\"" + text + "\"}";
            ASSERT_EQ(memberA(json), memberAOfDocument(json))
                << testing::PrintToString(part) << " " << offset;
        }
    }
}

} // namespace
} // namespace velmo
