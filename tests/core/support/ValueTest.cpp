#include "core/support/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velmo {
namespace {

struct Readings {
    Value value;
    ValueKind kind;
    std::optional<std::int64_t> integer;
    std::optional<double> real;
    std::optional<std::int64_t> number;
    std::optional<bool> truth;
};

TEST(Value, TellsNumbersAndBooleansApartAndConvertsOnlyWhereItSaysSo) {
    const Readings cases[] = {
        {Value(), ValueKind::other, {}, {}, {}, {}},
        {true, ValueKind::boolean, {}, {}, 1, true},
        {false, ValueKind::boolean, {}, {}, 0, false},
        {0, ValueKind::integer, 0, 0.0, 0, false},
        {-7, ValueKind::integer, -7, -7.0, -7, true},
        {INT64_MIN, ValueKind::integer, INT64_MIN, -0x1p63, INT64_MIN, true},
        {std::uint64_t{INT64_MAX}, ValueKind::integer, INT64_MAX, 0x1p63, INT64_MAX, true},
        {std::uint64_t{INT64_MAX} + 1, ValueKind::real, {}, 0x1p63, {}, true},
        {UINT64_MAX, ValueKind::real, {}, 0x1p64, {}, true},
        {0.0, ValueKind::real, {}, 0.0, 0, false},
        {-0.0, ValueKind::real, {}, -0.0, 0, false},
        {0.9, ValueKind::real, {}, 0.9, 0, true},
        {-1.9F, ValueKind::real, {}, double{-1.9F}, -1, true},
        {-0x1p63, ValueKind::real, {}, -0x1p63, INT64_MIN, true},
        {0x1p63, ValueKind::real, {}, 0x1p63, {}, true},
        {std::nextafter(-0x1p63, -HUGE_VAL), ValueKind::real, {}, -0x1.0000000000001p63, {}, true},
        {HUGE_VAL, ValueKind::real, {}, HUGE_VAL, {}, {}},
        {"1", ValueKind::text, {}, {}, {}, {}},
        {Bytes{1}, ValueKind::data, {}, {}, {}, {}},
        {Value::Array{1}, ValueKind::array, {}, {}, {}, {}},
        {Value::Dictionary{{"n", 1}}, ValueKind::dictionary, {}, {}, {}, {}},
    };
    int row = 0;
    for (const Readings& c : cases) {
        EXPECT_EQ(c.value.kind(), c.kind) << "row " << row;
        EXPECT_EQ(c.value.boolean().has_value(), c.kind == ValueKind::boolean) << "row " << row;
        EXPECT_EQ(c.value.integer(), c.integer) << "row " << row;
        EXPECT_EQ(c.value.real(), c.real) << "row " << row;
        EXPECT_EQ(c.value.number(), c.number) << "row " << row;
        EXPECT_EQ(c.value.truth(), c.truth) << "row " << row;
        EXPECT_EQ(c.value.text().has_value(), c.kind == ValueKind::text) << "row " << row;
        EXPECT_EQ(c.value.data().has_value(), c.kind == ValueKind::data) << "row " << row;
        EXPECT_EQ(c.value.array() != nullptr, c.kind == ValueKind::array) << "row " << row;
        EXPECT_EQ(c.value.dictionary() != nullptr, c.kind == ValueKind::dictionary)
            << "row " << row;
        ++row;
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
    EXPECT_EQ(value.member("name")->text(), std::string_view("a\0b", 3));
    EXPECT_EQ(value.member("bytes")->data()->back(), 255);
    const Value::Array& list = *value.member("list")->array();
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[1], Value(Value::Array{}));
    EXPECT_EQ(list[2], (Value::Array{true, 2.5}));
    EXPECT_EQ(list[3].kind(), ValueKind::other);

    EXPECT_EQ(value.member("Name"), nullptr);
    EXPECT_EQ(Value(5).member("name"), nullptr);
    EXPECT_EQ(member(nullptr, "name"), nullptr);
    EXPECT_EQ(member(value.dictionary(), "name"), value.member("name"));
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
            EXPECT_EQ(left == right, &left == &right);
    }
    const Value copy = values[10];
    EXPECT_EQ(copy, values[10]);
}

} // namespace
} // namespace velmo
