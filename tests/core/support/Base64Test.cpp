#include "core/support/Base64.h"

#include "tests/Texts.h"

#include <rapidcheck/gtest.h>

#include <cctype>

namespace velmo {
namespace {

TEST(Base64, SpellsBytesInTheStandardAlphabet) {
    const std::pair<std::string, std::string> cases[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foobar", "Zm9vYmFy"},
                                                         {"\xFF\xEF", "/+8="},
                                                         {"\xFB\xFF\xBF", "+/+/"},
                                                         {times(3, {"\0", 1}), "AAAA"}};
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(Base64::encode(bytesOf(bytes)), text);
        EXPECT_EQ(textOf(Base64::decode(text).value()), bytes) << text;
    }
}

TEST(Base64, RefusesWhatNoEncoderWrites) {
    expectRefused(Base64::decode,
                  {"Z", "Zg", "Zg=", "Zg===", "Z===", "====", "=", "Zm9=v===", "Zg==Zg==", "Zm=v",
                   "Zh==", "Zm9=", "Zm9v\n", "Zm9v ", " Zm9v", "Zm 9v"});
}

TEST(Base64, EveryByteOutsideTheAlphabetIsRefusedAtEveryPlace) {
    const std::string whole = "AbCdEfGhIjKl";
    for (int byte = 0; byte < 256; ++byte) {
        const bool letter = (byte < 128 && std::isalnum(byte) != 0) || byte == '+' || byte == '/';
        for (std::size_t place = 0; place < whole.size(); ++place) {
            std::string text = whole;
            text[place] = static_cast<char>(byte);
            EXPECT_EQ(Base64::decode(text).has_value(), letter) << byte << " at " << place;
        }
    }
}

RC_GTEST_PROP(Base64, BytesGoRoundInPiecesToo, (const Bytes& some, std::uint16_t count)) {
    const std::string bytes = times(count % 600U, textOf(some));
    const std::string text = Base64::encode(bytesOf(bytes));
    Base64::Decoder decoder(0);
    for (std::string_view rest = text; !rest.empty();) {
        const auto length = std::min(rest.size(), *rc::gen::inRange<std::size_t>(0, 9000));
        RC_ASSERT(decoder.append(rest.substr(0, length)));
        rest.remove_prefix(length);
    }
    RC_ASSERT(textOf(decoder.finish().value()) == bytes);
}

} // namespace
} // namespace velmo
