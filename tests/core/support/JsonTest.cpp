#include "core/support/Json.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <string>

namespace velmo {
namespace {

using namespace std::string_literals;

TEST(Json, RefusesTheWholeTextForAnyFaultAnywhere) {
    const std::string deep(1025, '[');
    const std::string cases[] = {
        "",
        " ",
        "{",
        "{\"a\":1}x",
        "{\"a\":1} {}",
        "{\"a\":1,}",
        "[1,]",
        "{a:1}",
        "{'a':1}",
        "{\"a\":tru}",
        "{\"a\":01}",
        "{\"a\":1.}",
        "{\"a\":+1}",
        "{\"a\":NaN}",
        "{\"a\":1e400}",
        "{\"a\":18446744073709551616}",
        "{\"a\":\"\xFF\"}",
        "{\"a\":\"\n\"}",
        "{\"a\":\"\\uD800\"}",
        "{\"a\":1}\0"s,
        "\xEF\xBB\xBF{}",
        "\u00A0{}",
        "\v{}",
        "{\"a\":1,\"a\":2}",
        "{\"a\":1,\"\\u0061\":2}",
        "[{\"b\":{\"c\":1,\"d\":2,\"c\":3}}]",
        "{\0}\0"s,
        deep + std::string(1025, ']'),
    };
    for (const std::string& text : cases)
        EXPECT_FALSE(JsonDocument::parse(text)) << testing::PrintToString(text);
    EXPECT_FALSE(JsonDocument::parse(std::string_view())); // a null pointer, not a pointer to ""
}

TEST(Json, TellsTheKindsApart) {
    struct Case {
        std::string text;
        JsonKind kind;
        std::optional<std::int64_t> integer;
        std::optional<double> number;
    };

    const Case cases[] = {
        {"null", JsonKind::null, {}, {}},
        {"true", JsonKind::boolean, {}, {}},
        {"0", JsonKind::integer, 0, 0},
        {"-0", JsonKind::integer, 0, 0},
        {"9223372036854775807", JsonKind::integer, INT64_MAX, 0x1p63},
        {"9223372036854775808", JsonKind::integer, {}, 0x1p63},
        {"2.0", JsonKind::real, {}, 2},
        {"2e0", JsonKind::real, {}, 2},
        {"\"1\"", JsonKind::text, {}, {}},
        {"[]", JsonKind::array, {}, {}},
        {"{}", JsonKind::object, {}, {}},
    };
    for (const Case& c : cases) {
        const auto document = JsonDocument::parse("{\"v\":" + c.text + "}");
        ASSERT_TRUE(document) << c.text;
        const JsonValue value = document->root().object()->member("v").value();
        EXPECT_EQ(value.kind(), c.kind) << c.text;
        EXPECT_EQ(value.integer(), c.integer) << c.text;
        EXPECT_EQ(value.number(), c.number) << c.text;
        EXPECT_EQ(value.boolean().has_value(), c.kind == JsonKind::boolean) << c.text;
        EXPECT_EQ(value.text().has_value(), c.kind == JsonKind::text) << c.text;
        EXPECT_EQ(value.array().has_value(), c.kind == JsonKind::array) << c.text;
        EXPECT_EQ(value.object().has_value(), c.kind == JsonKind::object) << c.text;
    }
}

TEST(Json, UnescapesNamesAndTexts) {
    const auto document =
        JsonDocument::parse("\n{ \"\\u0063md\" : [\"a\\u0000\\/\\n😀\", 2] }\r\n");
    ASSERT_TRUE(document);
    const JsonObject object = document->root().object().value();
    EXPECT_TRUE(object.hasOnly({"x", "cmd"}));
    EXPECT_FALSE(object.hasOnly({"x"}));
    EXPECT_FALSE(object.member("CMD"));
    const auto elements = object.member("cmd")->array()->elements();
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_EQ(elements[0].text(), "a\0/\n😀"s);
    EXPECT_EQ(object.members()[0].name, "cmd");
}

TEST(Json, ValuesStayGoodWhenTheDocumentMoves) {
    auto first = JsonDocument::parse("{\"a\":\"text\"}");
    const JsonValue value = first->root().object()->member("a").value();
    const JsonDocument moved = *std::move(first);
    EXPECT_EQ(value.text(), "text");
    EXPECT_TRUE(moved.root().object()->member("a"));
}

RC_GTEST_PROP(Json, AnyBytesGiveAnAnswer, (const std::string& bytes)) {
    JsonDocument::parse(bytes);
    JsonDocument::parse("{\"a\":" + bytes + "}");
}

} // namespace
} // namespace velmo
