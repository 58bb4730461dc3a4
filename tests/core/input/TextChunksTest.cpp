#include "core/input/TextChunks.h"

#include "core/support/Text.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

using testing::ElementsAre;

TEST(TextChunks, FillsEachChunkWithWholeCharacters) {
    const std::string family = "👨‍👩‍👧"; // 8 units
    std::string tall = "e";                          // one character of 25 units
    for (int i = 0; i < 24; ++i)
        tall += "\u0301";
    const std::string twenty(20, 'x');

    EXPECT_THAT(TextChunks::split(""), ElementsAre());
    EXPECT_THAT(TextChunks::split(twenty), ElementsAre(twenty));
    EXPECT_THAT(TextChunks::split(twenty + twenty + "yyyyy"), ElementsAre(twenty, twenty, "yyyyy"));
    EXPECT_THAT(TextChunks::split(family + family + family), ElementsAre(family + family, family));
    EXPECT_THAT(TextChunks::split(std::string(19, 'x') + "😀"),
                ElementsAre(std::string(19, 'x'), "😀"));
    EXPECT_THAT(TextChunks::split(std::string(18, 'x') + "😀"),
                ElementsAre(std::string(18, 'x') + "😀"));
    EXPECT_THAT(TextChunks::split(std::string(19, 'x') + "\r\ny"),
                ElementsAre(std::string(19, 'x'), "\r\ny"));
    EXPECT_THAT(TextChunks::split("a" + tall + "b"), ElementsAre("a", tall, "b"));
    EXPECT_THAT(TextChunks::split("a\xFF"), ElementsAre("a\uFFFD"));
}

RC_GTEST_PROP(TextChunks, ChunksAreShortAndJoinToTheText, (const std::u32string& scalars)) {
    std::string text;
    for (const char32_t scalar : scalars) {
        const char32_t alphabet[] = {scalar % 0x300, U'e', 0x301, 0x1F468, 0x200D, 0x1F1E9, '\n'};
        Text::append(text, alphabet[scalar % std::size(alphabet)]);
    }
    std::string joined;
    for (const std::string& chunk : TextChunks::split(text)) {
        RC_ASSERT(!chunk.empty());
        RC_ASSERT(Text::utf16Length(chunk) <= TextChunks::limit
                  || Text::characterCount(chunk) == 1);
        joined += chunk;
    }
    RC_ASSERT(joined == text);
}

} // namespace
} // namespace velmo
