#include "core/support/Record.h"

#include "core/output/Output.h"
#include "core/support/Text.h"
#include "lab/instruments/AnyValues.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace velmo {
namespace {

using namespace std::string_literals;

enum class Colour { red, green };

struct Inner {
    int n = 0;

    static constexpr auto fields = std::tuple{field("n", &Inner::n)};
    bool operator==(const Inner&) const = default;
};

struct Everything {
    std::string zText;
    bool flag = false;
    std::int64_t integer = 0;
    double real = 0;
    Colour colour = Colour::red;
    std::optional<std::string> maybe = "default";
    std::vector<Inner> list;
    Inner inner;

    static constexpr auto fields = std::tuple{
        field("zText", &Everything::zText), field("flag", &Everything::flag),
        constant("type", "everything"),     field("integer", &Everything::integer),
        field("real", &Everything::real),   field("colour", &Everything::colour),
        field("maybe", &Everything::maybe), field("list", &Everything::list),
        field("inner", &Everything::inner),
    };
    bool operator==(const Everything&) const = default;
};

struct Empty {
    std::optional<bool> nothing;

    static constexpr auto fields = std::tuple{field("nothing", &Empty::nothing)};
};

} // namespace

template<>
inline constexpr auto rawTexts<Colour> = std::to_array<std::string_view>({"red", "green"});

namespace {

TEST(Record, WritesSortedKeysAndLeavesOutWhatIsAbsent) {
    Everything record{.zText = "z",
                      .flag = true,
                      .integer = INT64_MIN,
                      .real = 1.5,
                      .colour = Colour::green,
                      .maybe = std::nullopt,
                      .list = {{.n = 1}, {.n = 2}},
                      .inner = {}};
    EXPECT_EQ(encodeJson(record),
              R"({"colour":"green","flag":true,"inner":{"n":0},"integer":-9223372036854775808,)"
              R"("list":[{"n":1},{"n":2}],"real":1.5,"type":"everything","zText":"z"})");
    EXPECT_EQ(encodeJson(Empty()), "{}");
    EXPECT_EQ(encodeJson(std::vector<Inner>()), "[]");
    const std::map<std::string, int> map{{"\xC3\xA9", 3}, {"a/b", 2}, {"B", 1}};
    EXPECT_EQ(encodeJson(map), R"({"B":1,"a\/b":2,"é":3})");
}

TEST(Record, WritesNumbersInTheShortestFormThatReadsBack) {
    const std::pair<double, std::string> cases[] = {
        {0, "0"},
        {-0.0, "-0"},
        {800, "800"},
        {1700000000, "1700000000"},
        {-1e15, "-1000000000000000"},
        {0x1p53, "9007199254740992"},
        {0x1p53 + 2, "9007199254740994"},
        {0x1p54, "1.8014398509481984e+16"},
        {1e300, "1e+300"},
        {0.1, "0.1"},
        {1e-4, "0.0001"},
        {1700000000.25, "1700000000.25"},
        {5e-324, "5e-324"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(encodeJson(std::vector{value}), "[" + text + "]");
    EXPECT_EQ(encodeJson(std::vector{0.1F, 16777216.0F}), "[0.1,16777216]");
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL})
        EXPECT_EQ(encodeJson(std::vector{1.0, value}),
                  std::unexpected(EncodingError::nonFiniteNumber));
}

TEST(Record, EscapesTexts) {
    const std::string text = "\"\\/\b\f\n\r\t\0\x1F\x7F\u2028é😀\xFF"s;
    EXPECT_EQ(encodeJson(text), R"("\"\\\/\b\f\n\r\t\u0000\u001f)"
                                "\x7F\u2028é😀\uFFFD\"");
    EXPECT_EQ(encodeJson("a/b"s, Slashes::plain), "\"a/b\"");
}

TEST(Record, DecodesOnlyWhatHasEveryFieldInItsKind) {
    const std::string whole = R"({"zText":"z","flag":true,"integer":5,"real":1,"colour":"green",)"
                              R"("maybe":"m","list":[{"n":1}],"inner":{"n":7},"other":[{}]})";
    const auto decoded = decodeRecord<Everything>(whole);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, (Everything{.zText = "z",
                                    .flag = true,
                                    .integer = 5,
                                    .real = 1,
                                    .colour = Colour::green,
                                    .maybe = "m",
                                    .list = {{.n = 1}},
                                    .inner = {.n = 7}}));

    struct Change {
        std::string from, to;
        bool accepted;
    };

    const Change changes[] = {
        {R"("maybe":"m",)", "", true},
        {R"("maybe":"m")", R"("maybe":null)", true},
        {R"("maybe":"m")", R"("maybe":1)", false},
        {R"("zText":"z",)", "", false},
        {"true", "1", false},
        {"true", "\"true\"", false},
        {R"("integer":5)", R"("integer":5.0)", false},
        {R"("integer":5)", R"("integer":true)", false},
        {R"("integer":5)", R"("integer":9223372036854775808)", false},
        {R"("real":1)", R"("real":null)", false},
        {"green", "Green", false},
        {R"([{"n":1}])", R"([{"n":1},{}])", false},
        {R"({"n":7})", R"({"n":2147483648})", false},
        {R"({"n":7})", "[]", false},
    };
    for (const auto& [from, to, accepted] : changes) {
        std::string text = whole;
        text.replace(text.find(from), from.size(), to);
        const auto changed = decodeRecord<Everything>(text);
        EXPECT_EQ(changed.has_value(), accepted) << text;
        EXPECT_TRUE(!changed || !changed->maybe) << text;
    }
    EXPECT_FALSE(decodeRecord<Everything>("[" + whole + "]"));
}

struct Strict {
    bool needed = false;
    std::int64_t count = 1;
    std::optional<std::string> maybe = "default";

    static constexpr auto fields =
        std::tuple{constant("v", 1), constant("type", "strict"), field("needed", &Strict::needed),
                   field("count", &Strict::count).orDefault(), field("maybe", &Strict::maybe)};
    bool operator==(const Strict&) const = default;
};

TEST(Record, ExactDecodingRefusesUnknownMembers) {
    constexpr std::string_view head = R"({"v":1,"type":"strict","needed":true)";
    const std::pair<std::string, Strict> accepted[] = {
        {"}", {.needed = true, .maybe = {}}},
        {R"(,"count":5,"maybe":"m"})", {.needed = true, .count = 5, .maybe = "m"}},
    };
    for (const auto& [rest, record] : accepted) {
        const std::string json = std::string(head) + rest;
        EXPECT_EQ(decodeRecordExactly<Strict>(json, json.size()), record) << json;
        EXPECT_FALSE(decodeRecordExactly<Strict>(json, json.size() - 1)) << json;
    }
    for (const std::string refused :
         {R"(,"other":1})", R"(,"maybe":null})", R"(,"count":null})", R"(,"count":"5"})"})
        EXPECT_FALSE(decodeRecordExactly<Strict>(std::string(head) + refused)) << refused;
    for (const char* const refused :
         {"[]", "", R"({"v":1,"type":"strict"})", R"({"type":"strict","needed":true})",
          R"({"v":2,"type":"strict","needed":true})", R"({"v":1.0,"type":"strict","needed":true})",
          R"({"v":1,"type":"loose","needed":true})"})
        EXPECT_FALSE(decodeRecordExactly<Strict>(std::string_view(refused))) << refused;
}

TEST(Record, WritesAnyValueThatJsonCanSay) {
    const Value value =
        Value::Dictionary{{"b", Value::Array{1, 2.5, true, "a/b", Value(nullptr), Value::Array{}}},
                          {"a", Value::Dictionary{}}};
    const std::map<std::string, Value> map{{"k", value}};
    EXPECT_EQ(encodeJson(map, Slashes::plain), R"({"k":{"a":{},"b":[1,2.5,true,"a/b",null,[]]}})");
    for (const Value& unsayable : {Value(), Value(Bytes{1}), Value(Value::Array{Bytes{}})})
        EXPECT_EQ(encodeJson(unsayable), std::unexpected(EncodingError::noJsonForm));
    EXPECT_EQ(encodeJson(Value(HUGE_VAL)), std::unexpected(EncodingError::nonFiniteNumber));
}

TEST(Output, PrintsOneWholeLineWhateverHappens) {
    std::vector<std::string> written;
    const auto sink = [&](std::string_view line) { written.emplace_back(line); };
    Output::print(Inner{.n = 3}, sink);
    Output::print(Everything{.real = HUGE_VAL}, sink);
    EXPECT_THAT(written, testing::ElementsAre("{\"n\":3}\n", "[]\n"));
}

TEST(Record, WhatIsWrittenReadsBackTheSame) {
    forAny([](AnyValues any) {
        Everything record{.zText = any.bytes(),
                          .flag = any.boolean(),
                          .integer = any.integer<std::int64_t>(),
                          .real = any.finiteReal(),
                          .maybe = any.boolean() ? std::optional(any.bytes()) : std::nullopt,
                          .inner = {.n = any.integer<int>()}};
        const auto decoded = decodeRecord<Everything>(encodeJson(record).value());
        record.zText = Text::repaired(record.zText);
        record.maybe = record.maybe.transform(Text::repaired);
        EXPECT_EQ(decoded, record);
    });
}

} // namespace
} // namespace velmo
