#include "core/support/JsonOutline.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

namespace velmo {
namespace {

/// The member "a", however it is held; absent when the whole is refused.
std::optional<std::string> memberA(std::string_view json) {
    const auto outline = JsonOutline::parse(json, {"a", "b"});
    const auto member = outline ? outline->object().member("a") : std::nullopt;
    if (!member || !member->text())
        return std::nullopt;
    const auto longText = outline->longText("a");
    if (!longText)
        return std::string(*member->text());
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
    const auto object = document ? document->object() : std::nullopt;
    const auto member = object ? object->member("a") : std::nullopt;
    const auto text = member ? member->text() : std::nullopt;
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

TEST(JsonOutline, LeavesOutLongTextsOfTheNamedMembersOfTheRootOnly) {
    const std::string text(20000, 'x');
    const std::string quoted = '"' + text + '"';

    struct Case {
        std::string json;
        bool leftOut;
    };

    const Case cases[] = {
        {R"({"a":)" + quoted + "}", true},
        {R"({ "c" : [1, {"b": ":"}], "a" )" + std::string("\n\t\r : ") + quoted + R"(, "d":"x"})",
         true},
        {R"({"a":"short"})", false},
        {R"({"\u0061":)" + quoted + "}", false},
        {R"({"a":1,)" + quoted + ":2}", false},
        {R"({"c":{"a":)" + quoted + "}}", false},
        {R"({"c":[)" + quoted + R"(],"a":"\"{"})", false},
        {R"({"c":)" + quoted + "}", false},
    };
    for (const auto& [json, leftOut] : cases) {
        const auto outline = JsonOutline::parse(json, {"a", "b"});
        ASSERT_TRUE(outline) << json;
        EXPECT_EQ(outline->longText("a").has_value(), leftOut) << json;
        EXPECT_FALSE(outline->longText("b"));
        EXPECT_EQ(memberA(json), memberAOfDocument(json)) << json;
    }
}

TEST(JsonOutline, RefusesWhatADocumentRefuses) {
    const std::string quoted = '"' + std::string(20000, 'x') + '"';
    const std::string cases[] = {"",
                                 quoted,
                                 "[" + quoted + "]",
                                 R"(["a":)" + quoted + "]",
                                 R"({"a":)" + quoted,
                                 R"({"a":"xx)",
                                 R"({"a":"x\"})",
                                 R"({"a":)" + quoted + ",}",
                                 R"({"a":)" + quoted + R"(,"a":"b"})",
                                 R"({"a":"b","\u0061":)" + quoted + "}",
                                 R"({"a":)" + quoted + R"(,"a":)" + quoted + "}",
                                 R"({"a":)" + quoted + "}}",
                                 R"({"a":)" + quoted + R"(,"x":tru})",
                                 R"({"a")" + quoted + "}",
                                 R"({:)" + quoted + "}",
                                 "\xEF\xBB\xBF{\"a\":" + quoted + "}"};
    for (const std::string& json : cases)
        EXPECT_FALSE(JsonOutline::parse(json, {"a", "b"})) << json.substr(0, 40);
}

TEST(JsonOutline, EndsWhenTheReaderHasEnough) {
    const std::string json = R"({"a":")" + std::string(100000, 'x') + "\"}";
    std::size_t taken = 0;
    EXPECT_FALSE(JsonOutline::parse(json, {"a"})->longText("a")->read([&](std::string_view piece) {
        return (taken += piece.size()) < 50000;
    }));
    EXPECT_LT(taken, 100000U);
}

/// Parts of texts, among them what is no JSON, repeated to several pieces.
RC_GTEST_PROP(JsonOutline, ReadsAndRefusesAsADocumentDoes, ()) {
    const std::vector<std::string> good{
        "x",      "\\/",        "\\\\",    "\\\"",           "\\n",       "\\u00e9", "\u00E9",
        "\u6F22", "\U0001F600", "\\u0000", "\\uD83D\\uDE00", "\\\\uDE00", "{\\\":[", "\x7F"};
    const std::vector<std::string> bad{"\\uD83D", "\\uDE00",      "\\x",
                                       "\\u12",   "\n",           "\xC3",
                                       "\xA9",    "\xED\xA0\x80", std::string(1, '\0')};
    std::string text;
    const auto repeat = [&](const std::string& part) {
        for (auto left = *rc::gen::inRange(1, 40000 / static_cast<int>(part.size())); left > 0;
             --left)
            text += part;
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
