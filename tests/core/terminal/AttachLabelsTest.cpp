#include "core/terminal/AttachLabels.h"

#include "tests/Texts.h"

#include <algorithm>

namespace velmo {
namespace {

using namespace PtyAttach;

TEST(AttachLabels, AreFilledInOnePass) {
    EXPECT_EQ(fill(english().exit, "3"), "The program ended (code 3).");
    EXPECT_EQ(fill("{code} {code}{Code}{code", "{code}"), "{code} {code}{Code}{code");
    EXPECT_EQ(fill(english().ended, "3"), "This session had already ended.");
}

TEST(AttachLabels, LoseEveryScalarThatATerminalObeysAndNoOther) {
    const std::pair<char32_t, char32_t> obeyed[] = {{0, 0x1F},        {0x7F, 0x9F},
                                                    {0x61C, 0x61C},   {0x200E, 0x200F},
                                                    {0x2028, 0x202E}, {0x2066, 0x2069}};
    for (char32_t scalar = 0; scalar < 0x20000; ++scalar) {
        if (scalar >= 0xD800 && scalar <= 0xDFFF)
            continue; // half of a pair, which UTF-8 can't spell
        const bool lost = std::ranges::any_of(obeyed, [scalar](const auto& range) {
            return range.first <= scalar && scalar <= range.second;
        });
        std::string text = "a";
        Text::append(text, scalar);
        EXPECT_EQ(sanitizeLabel(text), lost ? "a" : text) << std::uint32_t{scalar};
    }
    EXPECT_EQ(sanitizeLabel("\x9B\xFF z"), "\uFFFD\uFFFD z"); // a raw C1 byte is no scalar
}

TEST(AttachLabels, AreCutBetweenCharacters) {
    const std::string text = times(201, "e\u0301");
    EXPECT_EQ(sanitizeLabel(text), times(200, "e\u0301"));
    EXPECT_EQ(sanitizeTitle(text), times(120, "e\u0301"));
    EXPECT_EQ(titleSequence("\a" + text + "\x1B"), "\x1B]2;" + times(120, "e\u0301") + "\a");
}

} // namespace
} // namespace velmo
