#include "core/support/Text.h"

#include "tests/Texts.h"

#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

using namespace std::string_literals;

const std::string flags = "🇩🇪🇫🇷";
const std::string family = "👨‍👩‍👧";
const std::string accented = "e\u0301";

TEST(Text, RepairsEachMaximalIllFormedSequenceOnce) {
    const std::pair<std::string, std::string> cases[] = {
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

TEST(Text, MeasuresInTheUnitThatIsAskedFor) {
    const std::tuple<std::string, std::size_t, std::size_t> cases[] = {{"", 0, 0},
                                                                       {"abc", 3, 3},
                                                                       {"a\r\nb", 4, 3},
                                                                       {"\r\r\n\n", 4, 3},
                                                                       {"é", 1, 1},
                                                                       {accented, 2, 1},
                                                                       {"x" + accented + "y", 4, 3},
                                                                       {"😀", 2, 1},
                                                                       {flags, 8, 2},
                                                                       {family, 8, 1},
                                                                       {"가\u1100\u1161", 3, 2},
                                                                       {"\xFF\xFF", 2, 2}};
    for (const auto& [text, utf16, characters] : cases) {
        EXPECT_EQ(Text::utf16Length(text), utf16) << text;
        EXPECT_EQ(Text::characterCount(text), characters) << text;
    }
}

TEST(Text, CutsBetweenCharactersOnly) {
    const Strings characters{"a", "\r\n", accented, family, "🇩🇪", "🇫🇷"};
    const std::string text = "a\r\n" + accented + family + flags;
    std::string prefix;
    for (std::size_t count = 0; count <= characters.size(); ++count) {
        EXPECT_EQ(Text::prefix(text, count), prefix) << count;
        EXPECT_EQ(Text::hasMoreCharactersThan(text, count), prefix != text) << count;
        prefix += count < characters.size() ? characters[count] : "";
    }
    EXPECT_EQ(Text::prefix(text, 7), text);
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
    const std::u32string_view tabs = U" \t", blanks = U" \t\u00A0\u3000",
                              newlines = U"\n\v\r\u0085\u2028\u2029", others = U"\x1C\u200B\uFEFFx";
    for (const std::u32string_view kind : {blanks, newlines, others}) {
        for (const char32_t scalar : kind) {
            SCOPED_TRACE(std::uint32_t{scalar});
            EXPECT_EQ(Text::isSpaceOrTab(scalar), tabs.contains(scalar));
            EXPECT_EQ(Text::isBlank(scalar), kind == blanks);
            EXPECT_EQ(Text::isNewline(scalar), kind == newlines);
            EXPECT_EQ(Text::isBlankOrNewline(scalar), kind != others);
        }
    }
}

TEST(Text, FindsControlCharacters) {
    expectVerdicts(Text::hasControl,
                   {"\0"s, "a\x1F", "\x7F", "\u0080", "é\u009F", "\u2028", "\u2029b"},
                   {"", " ~\u00A0\u2027", "\x80\x9F"});
}

TEST(Text, TrimsAndSplitsByScalars) {
    EXPECT_EQ(Text::trimmed("\u00A0 a b\u2003", Text::isBlank), "a b");
    EXPECT_EQ(Text::trimmed(" \n ", Text::isBlankOrNewline), "");
    EXPECT_EQ(Text::trimmed("\n a", Text::isBlank), "\n a");
    EXPECT_EQ(Text::pieces("a\r\n\u2028b\u0085\u0085c", Text::isNewline),
              (std::vector<std::string_view>{"a", "b", "c"}));
    EXPECT_TRUE(Text::pieces("\n\n", Text::isNewline).empty());
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
