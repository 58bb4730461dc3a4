#include "core/support/Value.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

TEST(Value, IsOfOneKindOnly) {
    const Value ofEachKind[] = {Value(),
                                Value(nullptr),
                                true,
                                1,
                                1.0,
                                "1",
                                Bytes{'1'},
                                Value::Array{1},
                                Value::Dictionary{{"1", 1}}};
    for (std::size_t i = 0; i < std::size(ofEachKind); ++i) {
        SCOPED_TRACE(i);
        const Value& value = ofEachKind[i];
        const auto kind = static_cast<ValueKind>(i);
        EXPECT_EQ(value.kind(), kind);
        EXPECT_EQ(value.boolean().has_value(), kind == ValueKind::boolean);
        EXPECT_EQ(value.integer().has_value(), kind == ValueKind::integer);
        EXPECT_EQ(value.text().has_value(), kind == ValueKind::text);
        EXPECT_EQ(value.data().has_value(), kind == ValueKind::data);
        EXPECT_EQ(value.array() != nullptr, kind == ValueKind::array);
        EXPECT_EQ(value.dictionary() != nullptr, kind == ValueKind::dictionary);
    }
}

TEST(Value, ConvertsOnlyWhereItSaysSo) {
    struct Readings {
        Value value;
        std::optional<std::int64_t> integer;
        std::optional<double> real;
        std::optional<std::int64_t> number;
        std::optional<bool> truth;
    };

    const Readings cases[] = {
        {Value(), {}, {}, {}, {}},
        {true, {}, {}, 1, true},
        {false, {}, {}, 0, false},
        {0, 0, 0.0, 0, false},
        {-7, -7, -7.0, -7, true},
        {INT64_MIN, INT64_MIN, -0x1p63, INT64_MIN, true},
        {std::uint64_t{INT64_MAX}, INT64_MAX, 0x1p63, INT64_MAX, true},
        {std::uint64_t{INT64_MAX} + 1, {}, 0x1p63, {}, true},
        {UINT64_MAX, {}, 0x1p64, {}, true},
        {-0.0, {}, -0.0, 0, false},
        {0.9, {}, 0.9, 0, true},
        {-1.9F, {}, double{-1.9F}, -1, true},
        {-0x1p63, {}, -0x1p63, INT64_MIN, true},
        {std::nextafter(-0x1p63, -HUGE_VAL), {}, -0x1.0000000000001p63, {}, true},
        {HUGE_VAL, {}, HUGE_VAL, {}, {}},
        {"1", {}, {}, {}, {}},
        {Bytes{1}, {}, {}, {}, {}},
        {Value::Array{1}, {}, {}, {}, {}},
    };
    for (const auto& [value, integer, real, number, truth] : cases) {
        SCOPED_TRACE(testing::PrintToString(real) + ", " + testing::PrintToString(number));
        EXPECT_EQ(value.integer(), integer);
        EXPECT_EQ(value.real(), real);
        EXPECT_EQ(value.number(), number);
        EXPECT_EQ(value.truth(), truth);
    }
    const Value nan = std::nan("");
    EXPECT_TRUE(std::isnan(nan.real().value()));
    EXPECT_FALSE(nan.number());
    EXPECT_FALSE(nan.truth());
}

TEST(Value, HoldsWhatItWasBuiltFrom) {
    const std::string name = "name";
    const Value value = Value::Dictionary{
        {name, std::string("a\0b", 3)},
        {"list", Value::Array{1, Value::Array{}, Value::Array{true, 2.5}, Value()}},
        {"bytes", Bytes{0, 255}},
    };
    EXPECT_EQ(value["name"].text(), std::string_view("a\0b", 3));
    EXPECT_EQ(value["bytes"].data()->back(), 255);
    const auto list = value["list"].elements();
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[1], Value(Value::Array{}));
    EXPECT_EQ(list[2], (Value::Array{true, 2.5}));
    EXPECT_EQ(list[3].kind(), ValueKind::other);

    EXPECT_EQ(value["Name"].kind(), ValueKind::other);
    EXPECT_EQ(Value(5)["name"]["x"].kind(), ValueKind::other);
    EXPECT_EQ(Value::member(nullptr, "name").kind(), ValueKind::other);
    EXPECT_TRUE(value["name"].elements().empty());
}

TEST(Value, EqualsOnlyTheSameKindAndContent) {
    const Value values[] = {Value(),
                            true,
                            1,
                            2,
                            1.0,
                            "1",
                            Bytes{'1'},
                            Value::Array{1},
                            Value::Array{1.0},
                            Value::Dictionary{{"1", 1}},
                            Value::Dictionary{{"1", true}},
                            Value::Dictionary{{"2", 1}}};
    for (const Value& left : values) {
        for (const Value& right : values)
            EXPECT_EQ(left == Value(right), &left == &right);
    }
}

} // namespace
} // namespace velmo
