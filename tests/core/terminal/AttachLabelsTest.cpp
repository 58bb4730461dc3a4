#include "core/terminal/AttachLabels.h"

#include "tests/Texts.h"

#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

using namespace std::string_literals;
using namespace PtyAttach;

TEST(AttachLabels, AreFilledInOnePass) {
    EXPECT_EQ(fill(english().exit, "3"), "The program ended (code 3).");
    EXPECT_EQ(fill("{code} {code}{Code}{code", "{code}"), "{code} {code}{Code}{code");
    EXPECT_EQ(fill(english().ended, "3"), "This session had already ended.");
}

TEST(AttachLabels, HoldNothingThatATerminalObeys) {
    const std::pair<std::string, std::string> cases[] = {
        {"Größe 😀 100 %", "Größe 😀 100 %"},
        {"a\x1B]2;b\ac\r\n\td", "a]2;bcd"},
        {"a\0b\x7F\u0080\u009Bc\u2028\u2029"s, "abc"},
        {"\u202Eevil\u202C \u2066x\u2069 \u200E\u200F\u061Cy", "evil x y"},
        {"\x9B\xFF z", "\uFFFD\uFFFD z"}, // a raw C1 byte is no scalar
    };
    for (const auto& [text, clean] : cases) {
        EXPECT_EQ(sanitizeLabel(text), clean) << testing::PrintToString(text);
        EXPECT_EQ(titleSequence(text), "\x1B]2;" + clean + "\a") << testing::PrintToString(text);
    }
}

TEST(AttachLabels, AreCutBetweenCharacters) {
    const std::string text = times(201, "e\u0301");
    EXPECT_EQ(sanitizeLabel(text), times(200, "e\u0301"));
    EXPECT_EQ(sanitizeTitle(text), times(120, "e\u0301"));
}

RC_GTEST_PROP(AttachLabels, AnyBytesComeOutHarmless, (const std::string& bytes)) {
    const std::string label = sanitizeLabel(bytes);
    RC_ASSERT(Text::isValidUtf8(label) && !Text::hasControl(label));
    RC_ASSERT(!Text::hasMoreCharactersThan(label, 200));
    RC_ASSERT(sanitizeLabel(label) == label);
}

} // namespace
} // namespace velmo
