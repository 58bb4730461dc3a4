#include "core/support/Ascii.h"

#include <gtest/gtest.h>

#include <cctype>
#include <limits>
#include <string>

namespace velmo {
namespace {

TEST(Ascii, JudgesEveryByteAsTheClassicLocaleDoesBelow128) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool ascii = byte < 128;
        EXPECT_EQ(Ascii::isDigit(c), ascii && std::isdigit(byte) != 0) << byte;
        EXPECT_EQ(Ascii::isLetter(c), ascii && std::isalpha(byte) != 0) << byte;
        EXPECT_EQ(Ascii::isControl(c), ascii && std::iscntrl(byte) != 0) << byte;
        EXPECT_EQ(Ascii::isSpaceOrControl(c), ascii && std::isgraph(byte) == 0) << byte;
        EXPECT_EQ(Ascii::isHex(c), ascii && std::isxdigit(byte) != 0) << byte;
        EXPECT_EQ(Ascii::isLowercaseHex(c),
                  ascii && std::isxdigit(byte) != 0 && std::isupper(byte) == 0)
            << byte;
    }
}

TEST(Ascii, ADecimalHasOneSpelling) {
    EXPECT_EQ(Ascii::positiveDecimal("1", 1), 1);
    EXPECT_EQ(Ascii::positiveDecimal("65535", 5), 65535);
    EXPECT_EQ(Ascii::positiveDecimal(std::string(18, '9'), 18), 999999999999999999);
    for (const char* refused : {"", "0", "01", "+1", "-1", " 1", "1 ", "1\n", "12345", "1e2", "١"})
        EXPECT_FALSE(Ascii::positiveDecimal(refused, 4)) << refused;
    EXPECT_FALSE(Ascii::positiveDecimal(std::string("1\0", 2), 4));
}

TEST(Ascii, ADecimalOfAnyLengthFitsOrIsRefused) {
    EXPECT_EQ(Ascii::decimal<std::int32_t>("2147483647"), INT32_MAX);
    EXPECT_EQ(Ascii::decimal<std::int32_t>(std::string(40, '0') + "7"), 7);
    EXPECT_EQ(Ascii::decimal<std::uint64_t>("18446744073709551615"), UINT64_MAX);
    for (const char* refused :
         {"", "2147483648", "4294967296", "99999999999999999999", "+1", "-1", " 1", "1 ", "1x"})
        EXPECT_FALSE(Ascii::decimal<std::int32_t>(refused)) << refused;
    EXPECT_FALSE(Ascii::decimal<std::uint64_t>("18446744073709551616"));
}

TEST(Ascii, ASignedDecimalHasAtMostOneSign) {
    EXPECT_EQ(Ascii::signedDecimal<std::int32_t>("-2147483647"), -INT32_MAX);
    EXPECT_EQ(Ascii::signedDecimal<std::int32_t>("+007"), 7);
    EXPECT_EQ(Ascii::signedDecimal<std::int32_t>("-0"), 0);
    for (const char* refused : {"", "+", "-", "--1", "+-1", "- 1", "1-", "-1.0", "-2147483648"})
        EXPECT_FALSE(Ascii::signedDecimal<std::int32_t>(refused)) << refused;
}

} // namespace
} // namespace velmo
