#include "core/terminal/AttachLabels.h"

#include "core/support/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

namespace velmo {
namespace {

using namespace std::string_literals;

TEST(AttachLabels, AreFilledInOnePass) {
    EXPECT_EQ(PtyAttach::fill(PtyAttach::english().exit, "3"), "The program ended (code 3).");
    EXPECT_EQ(PtyAttach::fill("{code} {code}{Code}{code", "{code}"), "{code} {code}{Code}{code");
    EXPECT_EQ(PtyAttach::fill(PtyAttach::english().ended, "3"), "This session had already ended.");
}

TEST(AttachLabels, HoldNothingThatATerminalObeys) {
    const std::pair<std::string, std::string> cases[] = {
        {"Größe 😀 100 %", "Größe 😀 100 %"},
        {"a\x1B]2;b\ac\r\n\td", "a]2;bcd"},
        {"a\0b\x7F\u0080\u009Bc\u2028\u2029"s, "abc"},
        {"\u202Eevil\u202C \u2066x\u2069 \u200E\u200F\u061Cy", "evil x y"},
        {"\x9B\xFF z", "\uFFFD\uFFFD z"}, // a raw C1 byte is no scalar
        {"", ""},
    };
    for (const auto& [text, clean] : cases) {
        EXPECT_EQ(PtyAttach::sanitizeLabel(text), clean) << testing::PrintToString(text);
        EXPECT_EQ(PtyAttach::sanitizeTitle(text), clean) << testing::PrintToString(text);
    }
    EXPECT_EQ(PtyAttach::titleSequence("a\ab"), "\x1B]2;ab\a");
}

TEST(AttachLabels, AreCutBetweenCharacters) {
    const std::string accented = "e\u0301";
    std::string text;
    for (int i = 0; i < 201; ++i)
        text += accented;
    EXPECT_EQ(PtyAttach::sanitizeLabel(text), text.substr(0, 200 * accented.size()));
    EXPECT_EQ(PtyAttach::sanitizeTitle(text), text.substr(0, 120 * accented.size()));
}

RC_GTEST_PROP(AttachLabels, AnyBytesComeOutHarmless, (const std::string& bytes)) {
    const std::string label = PtyAttach::sanitizeLabel(bytes);
    RC_ASSERT(Text::isValidUtf8(label));
    RC_ASSERT(!Text::hasControl(label));
    RC_ASSERT(!Text::hasMoreCharactersThan(label, 200));
    RC_ASSERT(PtyAttach::sanitizeLabel(label) == label);
}

} // namespace
} // namespace velmo
