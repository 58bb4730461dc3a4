#include "core/support/Json.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace std::string_literals;

TEST(Json, RefusesTheWholeTextForAnyFaultAnywhere) {
    expectRefused(JsonDocument::parse, words(R"({ {"a":1}x {"a":1}{} {"a":1,} [1,] {a:1} {'a':1}
        {"a":1,"a":2} {"a":1,"\u0061":2} [{"b":{"c":1,"d":2,"c":3}}]
        {"1":1,"2":1,"3":1,"4":1,"5":1,"6":1,"7":1,"8":1,"1":1})"));
    expectRefused(JsonDocument::parse, "{\"a\":#}",
                  {"tru", "01", "1.", "+1", "NaN", "01e400", "1e400x", "1e400.5", "-", "1e400-",
                   "\"\xFF\"", "\"\n\"", "\"\\uD800\"", R"({"":0,"":0})", R"([1e400,{"":0,"":0}])",
                   R"(1e400,"a":1)", R"("1e400)"});
    expectRefused(JsonDocument::parse, {"", " ", "{}\0"s, "{\0}\0"s, "\xEF\xBB\xBF{}", "\u00A0{}",
                                        "\v{}", times(1025, "[") + times(1025, "]")});
}

TEST(Json, TellsTheKindsApart) {
    struct Case {
        std::string text;
        JsonKind kind;
        std::optional<std::int64_t> integer;
        std::optional<double> number;
    };

    const Case cases[] = {{"null", JsonKind::null, {}, {}},
                          {"true", JsonKind::boolean, {}, {}},
                          {"-0", JsonKind::integer, 0, 0},
                          {"9223372036854775807", JsonKind::integer, INT64_MAX, 0x1p63},
                          {"9223372036854775808", JsonKind::integer, {}, 0x1p63},
                          {"18446744073709551616", JsonKind::real, {}, {}},
                          {"-9223372036854775809", JsonKind::real, {}, {}},
                          {"1e400", JsonKind::real, {}, {}},
                          {"-0.1E+400", JsonKind::real, {}, {}},
                          {"2.0", JsonKind::real, {}, 2},
                          {"2e0", JsonKind::real, {}, 2},
                          {"\"1\"", JsonKind::text, {}, {}},
                          {"[]", JsonKind::array, {}, {}},
                          {"{}", JsonKind::object, {}, {}}};
    for (const auto& [text, kind, integer, number] : cases) {
        SCOPED_TRACE(text);
        const auto document = JsonDocument::parse("{\"v\":" + text + "}");
        ASSERT_TRUE(document);
        const JsonValue value = document->root().object()->member("v").value();
        EXPECT_EQ(value.kind(), kind);
        EXPECT_EQ(value.integer(), integer);
        EXPECT_EQ(value.number(), number);
        EXPECT_EQ(value.boolean().has_value(), kind == JsonKind::boolean);
        EXPECT_EQ(value.text().has_value(), kind == JsonKind::text);
        EXPECT_EQ(value.array().has_value(), kind == JsonKind::array);
        EXPECT_EQ(value.object().has_value(), kind == JsonKind::object);
    }
}

TEST(Json, AcceptsADocumentWithANumberOutOfRange) {
    const auto document =
        JsonDocument::parse(R"({"a":[1e400,"1e400",2],"b":{"c":9e999},"1e400":3})");
    ASSERT_TRUE(document);
    const JsonObject object = document->object().value();
    const auto elements = object.member("a")->array()->elements();
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_FALSE(elements[0].number() || elements[0].object() || elements[0].text());
    EXPECT_EQ(elements[1].text(), "1e400");
    EXPECT_EQ(elements[2].integer(), 2);
    EXPECT_EQ(object.object("b")->member("c")->kind(), JsonKind::real);
    EXPECT_EQ(object.integer("1e400"), 3);
}

TEST(Json, UnescapesNamesAndTexts) {
    const auto document =
        JsonDocument::parse("\n{ \"\\u0063md\" : [\"a\\u0000\\/\\n😀\", 2] }\r\n");
    ASSERT_TRUE(document);
    const JsonObject object = document->root().object().value();
    EXPECT_EQ(object.size(), 1U);
    EXPECT_FALSE(object.member("CMD"));
    const auto elements = object.member("cmd")->array()->elements();
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_EQ(elements[0].text(), "a\0/\n😀"s);
    EXPECT_EQ(object.members()[0].name, "cmd");
}

TEST(Json, FindsTheMembersOfTheRootThatAreAskedFor) {
    const JsonPlainValue none; // as a constant it must have all its members set
    EXPECT_EQ(none.kind(), JsonKind::null);
    static constexpr auto names =
        std::to_array<std::string_view>({"a", "b", "c", "d", "e", "bc", "no"});
    constexpr NameTable table(names);
    std::array<JsonPlainValue, names.size()> found;
    const auto document = JsonDocument::parseAndFind(
        R"({"\u0061":-5,"x":{"no":1},"b":"t\u0000","c":true,"d":18446744073709551615,"e":1e400,"":0})",
        table, found);
    ASSERT_TRUE(document);
    EXPECT_EQ(found[0].integer(), -5);
    EXPECT_EQ(found[1].text(), "t\0"s);
    EXPECT_TRUE(found[2].boolean() && !found[0].boolean() && found[2].integer() == 0);
    for (std::size_t i = 3; i < found.size(); ++i)
        EXPECT_EQ(found[i].kind(), JsonKind::null) << names[i];
    for (const char* const refused : {R"({"a":1,"a":1})", R"({"x":1,"x":1})", "{\"a\":1", ""})
        EXPECT_FALSE(JsonDocument::parseAndFind(refused, table, found)) << refused;
    ASSERT_EQ(NameTable::slotOf("cx"), NameTable::slotOf("bc"));
    EXPECT_EQ(table.find("cx"), names.size());
    EXPECT_EQ(table.find("bc"), 5U);
}

TEST(Json, ValuesStayGoodWhenTheDocumentMoves) {
    auto first = JsonDocument::parse("{\"a\":\"text\"}");
    const JsonValue value = first->root().object()->member("a").value();
    const JsonDocument moved = *std::move(first);
    EXPECT_EQ(value.text(), "text");
    EXPECT_TRUE(moved.root().object()->member("a"));
}

} // namespace
} // namespace velmo
