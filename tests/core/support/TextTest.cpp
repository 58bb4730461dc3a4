#include "core/support/Text.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

const std::string flags = "🇩🇪🇫🇷";
const std::string family = "👨‍👩‍👧";
const std::string accented = "e\u0301";

struct Ill {
    std::string text;
    std::string repaired;
};

TEST(Text, RepairsEachMaximalIllFormedSequenceOnce) {
    const Ill cases[] = {
        {"a\x80z", "a\uFFFDz"},
        {"\xC0\xAF", "\uFFFD\uFFFD"},                     // overlong slash
        {"\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},           // overlong in three bytes
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},           // surrogate
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"}, // above U+10FFFF
        {"\xF5", "\uFFFD"},
        {"\xE2\x82", "\uFFFD"},       // cut short at the end
        {"\xF0\x9F\x98x", "\uFFFDx"}, // cut short by another character
        {"\xC3\xC3\xA9", "\uFFFD\u00E9"},
    };
    for (const auto& [text, repaired] : cases) {
        EXPECT_FALSE(Text::isValidUtf8(text)) << testing::PrintToString(text);
        EXPECT_EQ(Text::repaired(text), repaired) << testing::PrintToString(text);
    }
    for (const std::string& valid :
         {""s, "\0"s, "\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF"s, "\U00010000\U0010FFFF"s}) {
        EXPECT_TRUE(Text::isValidUtf8(valid)) << testing::PrintToString(valid);
        EXPECT_EQ(Text::repaired(valid), valid);
    }
}

struct Lengths {
    std::string text;
    std::size_t utf16;
    std::size_t characters;
};

TEST(Text, MeasuresInTheUnitThatIsAskedFor) {
    const Lengths cases[] = {
        {"", 0, 0},
        {"abc", 3, 3},
        {"a\r\nb", 4, 3},
        {"\r\r\n\n", 4, 3},
        {"é", 1, 1},
        {accented, 2, 1},
        {"x" + accented + "y", 4, 3},
        {"😀", 2, 1},
        {flags, 8, 2},
        {family, 8, 1},
        {"가" + "\u1100\u1161"s, 3, 2},
        {"\xFF\xFF", 2, 2},
    };
    for (const auto& [text, utf16, characters] : cases) {
        EXPECT_EQ(Text::utf16Length(text), utf16) << text;
        EXPECT_EQ(Text::characterCount(text), characters) << text;
    }
}

TEST(Text, CutsBetweenCharactersOnly) {
    const std::string text = "a\r\n" + accented + family + flags;
    const std::string prefixes[] = {"",
                                    "a",
                                    "a\r\n",
                                    "a\r\n" + accented,
                                    "a\r\n" + accented + family,
                                    "a\r\n" + accented + family + "🇩🇪",
                                    text,
                                    text};
    for (std::size_t count = 0; count < std::size(prefixes); ++count) {
        EXPECT_EQ(Text::prefix(text, count), prefixes[count]) << count;
        EXPECT_EQ(Text::hasMoreCharactersThan(text, count), prefixes[count] != text) << count;
    }
}

TEST(Text, LowercasesWithoutLocale) {
    EXPECT_EQ(Text::lowercased("INCÓGNITO Ünïx"), "incógnito ünïx");
    EXPECT_EQ(Text::lowercased("\u0130"), "i\u0307");
    EXPECT_EQ(Text::lowercased("I\u212A"), "ik");
    EXPECT_EQ(Text::lowercased("ΣΑΣ"), "σασ");
    EXPECT_EQ(Text::lowercased("A\xFFZ"), "a\uFFFDz");
}

TEST(Text, FoldsCaseFurtherThanLowercase) {
    EXPECT_EQ(Text::caseFolded("\u017F\u212Aß.SSH"), "skss.ssh");
    EXPECT_EQ(Text::caseFolded("\xFF\0A"s), "\uFFFD\0a"s);
}

TEST(Text, ReplacesInOnePass) {
    EXPECT_EQ(Text::replacedAll("{c}{c} {{c}} {c", "{c}", "<{c}>"), "<{c}><{c}> {<{c}>} {c");
    EXPECT_EQ(Text::replacedAll("aaa", "aa", ""), "a");
    EXPECT_EQ(Text::replacedAll("", "a", "b"), "");
}

TEST(Text, ComposesForTheComparisonsThatNeedIt) {
    EXPECT_EQ(Text::composed("Inco\u0301gnito"), "Incógnito");
    EXPECT_EQ(Text::composed("plain"), "plain");
    EXPECT_EQ(Text::composed("\xFF"), "\uFFFD");
}

TEST(Text, KeepsTheKindsOfWhiteSpaceApart) {
    struct Case {
        char32_t scalar;
        bool spaceOrTab, blank, newline;
    };

    const Case cases[] = {
        {U' ', true, true, false},     {U'\t', true, true, false},  {0x00A0, false, true, false},
        {0x3000, false, true, false},  {U'\n', false, false, true}, {0x0B, false, false, true},
        {U'\r', false, false, true},   {0x85, false, false, true},  {0x2028, false, false, true},
        {0x2029, false, false, true},  {0x1C, false, false, false}, {0x200B, false, false, false},
        {0xFEFF, false, false, false}, {U'x', false, false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Text::isSpaceOrTab(c.scalar), c.spaceOrTab) << std::uint32_t{c.scalar};
        EXPECT_EQ(Text::isBlank(c.scalar), c.blank) << std::uint32_t{c.scalar};
        EXPECT_EQ(Text::isNewline(c.scalar), c.newline) << std::uint32_t{c.scalar};
        EXPECT_EQ(Text::isBlankOrNewline(c.scalar), c.blank || c.newline)
            << std::uint32_t{c.scalar};
    }
}

TEST(Text, FindsControlCharacters) {
    for (const std::string& text :
         {"\0"s, "a\x1F"s, "\x7F"s, "\u0080"s, "é\u009F"s, "\u2028"s, "\u2029b"s})
        EXPECT_TRUE(Text::hasControl(text)) << testing::PrintToString(text);
    for (const std::string& text : {""s, " ~\u00A0\u2027"s, "\x80\x9F"s})
        EXPECT_FALSE(Text::hasControl(text)) << testing::PrintToString(text);
}

TEST(Text, TrimsAndSplitsByScalars) {
    EXPECT_EQ(Text::trimmed("\u00A0 a b\u2003", Text::isBlank), "a b");
    EXPECT_EQ(Text::trimmed(" \n ", Text::isBlankOrNewline), "");
    EXPECT_EQ(Text::trimmed("\n a", Text::isBlank), "\n a");
    EXPECT_THAT(Text::pieces("a\r\n\u2028b\u0085\u0085c", Text::isNewline),
                ElementsAre("a", "b", "c"));
    EXPECT_THAT(Text::pieces("\n\n", Text::isNewline), ElementsAre());
}

TEST(Text, FindsExactTextsInATable) {
    const std::string_view table[] = {"a", "\u00E9"};
    EXPECT_TRUE(Text::isOneOf("\u00E9", table));
    EXPECT_FALSE(Text::isOneOf("e\u0301", table));
    EXPECT_FALSE(Text::isOneOf("A", table));
}

RC_GTEST_PROP(Text, AnyBytesAreTotalAndRepairIsLossless, (const std::string& bytes)) {
    const std::string repaired = Text::repaired(bytes);
    RC_ASSERT(Text::isValidUtf8(repaired));
    RC_ASSERT(Text::repaired(repaired) == repaired);
    RC_ASSERT(Text::characterCount(bytes) == Text::characterCount(repaired));
    RC_ASSERT(Text::prefix(bytes, Text::characterCount(bytes)) == bytes);

    std::string joined;
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::string_view character = Text::firstCharacter(rest).bytes;
        RC_ASSERT(!character.empty());
        joined += character;
        rest.remove_prefix(character.size());
    }
    RC_ASSERT(joined == bytes);
}

} // namespace
} // namespace velmo
