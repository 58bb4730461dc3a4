#include "core/support/Ascii.h"

#include "core/support/Decimal.h"
#include "tests/Texts.h"

#include <cctype>

namespace velmo {
namespace {

TEST(Ascii, JudgesEveryByteAsTheClassicLocaleDoesBelow128) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const char c = static_cast<char>(byte);
        const bool ascii = byte < 128;
        EXPECT_EQ(Ascii::isDigit(c), ascii && std::isdigit(byte) != 0);
        EXPECT_EQ(Ascii::isLetter(c), ascii && std::isalpha(byte) != 0);
        EXPECT_EQ(Ascii::lowercased(c), ascii ? static_cast<char>(std::tolower(byte)) : c);
        EXPECT_EQ(Ascii::isControl(c), ascii && std::iscntrl(byte) != 0);
        EXPECT_EQ(Ascii::isSpaceOrControl(c), ascii && std::isgraph(byte) == 0);
        EXPECT_EQ(Ascii::isHex(c), ascii && std::isxdigit(byte) != 0);
        EXPECT_EQ(Ascii::isLowercaseHex(c), Ascii::isHex(c) && std::isupper(byte) == 0);
    }
}

TEST(Decimal, EachKindHasItsSpellings) {
    struct Case {
        std::string text;
        std::optional<std::int64_t> positive; ///< up to 9999
        std::optional<std::int32_t> digits, withMinus, withSign;
    };

    const Case cases[] = {{"1", 1, 1, 1, 1},
                          {"9999", 9999, 9999, 9999, 9999},
                          {"10000", {}, 10000, 10000, 10000},
                          {"0", {}, 0, 0, 0},
                          {"01", {}, 1, 1, 1},
                          {times(40, "0") + "7", {}, 7, 7, 7},
                          {"2147483647", {}, INT32_MAX, INT32_MAX, INT32_MAX},
                          {"+007", {}, {}, {}, 7},
                          {"-0", {}, {}, 0, 0},
                          {"-2147483648", {}, {}, INT32_MIN, INT32_MIN}};
    for (const auto& [text, positive, digits, withMinus, withSign] : cases) {
        EXPECT_EQ(Decimal::parsePositive(text, 9999), positive) << text;
        EXPECT_EQ(Decimal::parseUnsigned<std::int32_t>(text), digits) << text;
        EXPECT_EQ(Decimal::parse<std::int32_t>(text), withMinus) << text;
        EXPECT_EQ(Decimal::parseSigned<std::int32_t>(text), withSign) << text;
    }
    const Strings refused{"",    " 1",       "1 ",         "1\n",         "1x",
                          "1e2", "-1.0",     "+",          "-",           "--1",
                          "+-1", "-+1",      "- 1",        "1-",          "\u0661",
                          "++1", {"1\0", 2}, "2147483648", "-2147483649", times(20, "9")};
    expectRefused([](const auto& text) { return Decimal::parsePositive(text, 9999); }, refused);
    expectRefused([](const auto& text) { return Decimal::parseUnsigned<std::int32_t>(text); },
                  refused);
    expectRefused([](const auto& text) { return Decimal::parseSigned<std::int32_t>(text); },
                  refused);
}

TEST(Decimal, KeepsToItsRange) {
    for (int number = -130; number <= 130; ++number) {
        const std::string text = std::to_string(number);
        const Decimal::Range<std::int32_t> range{.min = -12, .max = 100};
        EXPECT_EQ(Decimal::parse(text, range).has_value(), number >= -12 && number <= 100) << text;
        EXPECT_EQ(Decimal::parseUnsigned(text, range).has_value(), number >= 0 && number <= 100)
            << text;
    }
}

} // namespace
} // namespace velmo
