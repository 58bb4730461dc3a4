#include "core/input/TextChunks.h"

#include "tests/Texts.h"

#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

TEST(TextChunks, FillsEachChunkWithWholeCharacters) {
    const std::string family = "👨‍👩‍👧";    // 8 units
    const std::string tall = "e" + times(24, "\u0301"); // one character of 25 units
    const std::string x18(18, 'x');
    const Strings cases[] = {{},
                             {x18 + "xx"},
                             {x18 + "xx", x18 + "xx", "yyyyy"},
                             {family + family, family},
                             {x18 + "x", "😀"},
                             {x18 + "😀"},
                             {x18 + "x", "\r\ny"},
                             {"a", tall, "b"}};
    for (const Strings& chunks : cases) {
        std::string text;
        for (const std::string& chunk : chunks)
            text += chunk;
        EXPECT_EQ(TextChunks::split(text), chunks) << text;
    }
    EXPECT_EQ(TextChunks::split("a\xFF"), Strings{"a\uFFFD"});
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
