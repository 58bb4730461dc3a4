#include "core/support/Base64.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <numeric>

namespace velmo {
namespace {

TEST(Base64, SpellsBytesInTheStandardAlphabet) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foobar", "Zm9vYmFy"},
        {"\xFF\xEF", "/+8="},
        {"\xFB\xFF\xBF", "+/+/"},
        {std::string(3, '\0'), "AAAA"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(Base64::encode(bytesOf(bytes)), text);
        const auto decoded = Base64::decode(text);
        ASSERT_TRUE(decoded) << text;
        EXPECT_EQ(textOf(*decoded), bytes) << text;
    }
}

TEST(Base64, RefusesWhatNoEncoderWrites) {
    for (const std::string_view text :
         {"Z",        "Zg",   "Zg=",     "Zg===", "Z===",   "====",  "=",     "Zm9=v===",
          "Zg==Zg==", "Zm=v", "Zh==",    "Zm9=",  "Zm9v\n", "Zm9v ", " Zm9v", "Zm 9v",
          "Zm-v",     "Zm_v", "Zm9\xC3", "Zm9vZ", "Zm.v",   "Zm\0v"})
        EXPECT_FALSE(Base64::decode(text)) << text;
    EXPECT_FALSE(Base64::decode(std::string("Zm\0v", 4)));
}

TEST(Base64, EveryByteOutsideTheAlphabetIsRefusedAtEveryPlace) {
    const std::string whole = "AbCdEfGhIjKl";
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < whole.size(); ++place) {
            std::string text = whole;
            text[place] = static_cast<char>(byte);
            const bool letter =
                (byte < 128 && std::isalnum(byte) != 0) || byte == '+' || byte == '/';
            EXPECT_EQ(Base64::decode(text).has_value(), letter) << byte << " at " << place;
        }
    }
}

RC_GTEST_PROP(Base64, BytesGoRoundInPiecesToo, (const Bytes& some, std::uint16_t times)) {
    Bytes bytes;
    for (std::size_t i = 0; i < times % 600U; ++i)
        bytes.insert(bytes.end(), some.begin(), some.end());
    const std::string text = Base64::encode(bytes);
    RC_ASSERT(Base64::decode(text) == bytes);
    Base64::Decoder decoder(0);
    for (std::string_view rest = text; !rest.empty();) {
        const auto length = std::min(rest.size(), *rc::gen::inRange<std::size_t>(0, 9000));
        RC_ASSERT(decoder.append(rest.substr(0, length)));
        rest.remove_prefix(length);
    }
    RC_ASSERT(decoder.finish() == bytes);
}

} // namespace
} // namespace velmo
