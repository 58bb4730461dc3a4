#include "core/support/Ascii.h"

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
        EXPECT_EQ(Ascii::isControl(c), ascii && std::iscntrl(byte) != 0);
        EXPECT_EQ(Ascii::isSpaceOrControl(c), ascii && std::isgraph(byte) == 0);
        EXPECT_EQ(Ascii::isHex(c), ascii && std::isxdigit(byte) != 0);
        EXPECT_EQ(Ascii::isLowercaseHex(c), Ascii::isHex(c) && std::isupper(byte) == 0);
    }
}

TEST(Ascii, EachKindOfDecimalHasItsSpellings) {
    struct Case {
        std::string text;
        std::optional<std::int64_t> positive; ///< of at most four digits
        std::optional<std::int32_t> plain, withSign;
    };

    const Case cases[] = {{"1", 1, 1, 1},
                          {"9999", 9999, 9999, 9999},
                          {"12345", {}, 12345, 12345},
                          {"0", {}, 0, 0},
                          {"01", {}, 1, 1},
                          {times(40, "0") + "7", {}, 7, 7},
                          {"2147483647", {}, INT32_MAX, INT32_MAX},
                          {"+007", {}, {}, 7},
                          {"-0", {}, {}, 0},
                          {"-2147483647", {}, {}, -INT32_MAX}};
    for (const auto& [text, positive, plain, withSign] : cases) {
        EXPECT_EQ(Ascii::positiveDecimal(text, 4), positive) << text;
        EXPECT_EQ(Ascii::decimal<std::int32_t>(text), plain) << text;
        EXPECT_EQ(Ascii::signedDecimal<std::int32_t>(text), withSign) << text;
    }
    const Strings refused{"",           " 1",          "1 ",         "1\n",         "1x",
                          "1e2",        "-1.0",        "+",          "-",           "--1",
                          "+-1",        "- 1",         "1-",         "١",           {"1\0", 2},
                          "2147483648", "-2147483648", "4294967296", times(20, "9")};
    expectRefused([](const auto& text) { return Ascii::positiveDecimal(text, 4); }, refused);
    expectRefused(Ascii::decimal<std::int32_t>, refused);
    expectRefused(Ascii::signedDecimal<std::int32_t>, refused);
    EXPECT_EQ(Ascii::positiveDecimal(times(18, "9"), 18), 999999999999999999);
    EXPECT_EQ(Ascii::decimal<std::uint64_t>("18446744073709551615"), UINT64_MAX);
    EXPECT_FALSE(Ascii::decimal<std::uint64_t>("18446744073709551616"));
}

} // namespace
} // namespace velmo
