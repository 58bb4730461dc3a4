#include "core/support/Base64.h"

#include "tests/Texts.h"

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
    expectRefused(Base64::decode, {"Z", "Zg", "Zg=", "Zg===", "A===", "Z===", "====", "=",
                                   "Zm9=v===", "Zg==Zg==", "Zm=v", "Zh==", "Zm9=", "Zm9v\n",
                                   "Zm9v ", " Zm9v", "Zm 9v"});
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

TEST(Base64, ATextCutAnywhereDecodesAsAWhole) {
    const auto decodeInPieces = [](const Strings& pieces) {
        Base64::Decoder decoder(0);
        for (const std::string& piece : pieces)
            EXPECT_TRUE(decoder.append(piece));
        return decoder.finish();
    };
    for (std::size_t size = 0; size <= 9; ++size) {
        const std::string bytes = std::string("\xFF\0abc\x80xyz", 9).substr(0, size);
        const std::string text = Base64::encode(bytesOf(bytes));
        for (std::size_t first = 0; first <= text.size(); ++first) {
            for (std::size_t second = first; second <= text.size(); ++second) {
                const auto decoded =
                    decodeInPieces({text.substr(0, first), text.substr(first, second - first),
                                    text.substr(second)});
                EXPECT_EQ(textOf(decoded.value()), bytes) << text << first << second;
            }
        }
    }
    // Around the block by which long texts are decoded.
    for (std::size_t size = 3069; size <= 3075; ++size) {
        const std::string bytes = times(size, "x");
        const std::string text = Base64::encode(bytesOf(bytes));
        for (std::size_t cut = 4090; cut < text.size(); ++cut)
            EXPECT_EQ(textOf(*decodeInPieces({text.substr(0, cut), text.substr(cut)})), bytes);
    }
}

} // namespace
} // namespace velmo
