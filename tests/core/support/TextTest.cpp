#include "core/support/Characters.h"
#include "lab/instruments/AnyValues.h"
#include "tests/Texts.h"

#include <utf8proc.h>

#include <bit>
#include <optional>

namespace velmo {
namespace {

using namespace std::string_literals;

const std::string flags = "🇩🇪🇫🇷";
const std::string family = "👨‍👩‍👧";
const std::string accented = "e\u0301";

/// Decodes the sequence at the front of the text by arithmetic alone; absent unless the sequence is
/// well-formed.
std::optional<std::pair<char32_t, std::size_t>> decoded(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t ones = static_cast<std::size_t>(std::countl_one(byte(0)));
    if (ones == 0)
        return std::pair(char32_t{byte(0)}, std::size_t{1});
    if (ones == 1 || ones > 4 || ones > text.size())
        return std::nullopt;
    char32_t value = byte(0) & (0x7FU >> ones);
    for (std::size_t i = 1; i < ones; ++i) {
        if (byte(i) >> 6U != 2)
            return std::nullopt;
        value = value << 6U | (byte(i) & 0x3FU);
    }
    constexpr char32_t min[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < min[ones] || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000))
        return std::nullopt;
    return std::pair(value, ones);
}

TEST(Text, TurnsIntoUtf16) {
    EXPECT_EQ(Text::utf16("e\u0301\u20AC\uFFFF\U00010000😀\U0010FFFF"),
              u"e\u0301\u20AC\uFFFF\U00010000😀\U0010FFFF");
    EXPECT_EQ(Text::utf16("a\xFF\xED\xA0\x80"), u"a\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(Text, ReadsEveryFirstAndSecondByteAsTheEncodingHasThem) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            for (const char* const tail : {"\x80\x80", "\xBF\xBF", "\x80x", "xx", ""}) {
                const std::string text =
                    std::string{static_cast<char>(first), static_cast<char>(second)} + tail;
                const auto expected = decoded(text);
                const Text::Scalar scalar = Text::firstScalar(text);
                ASSERT_EQ(scalar.valid, expected.has_value()) << testing::PrintToString(text);
                ASSERT_EQ(Text::isValidUtf8(scalar.bytes), scalar.valid);
                if (expected) {
                    ASSERT_EQ(scalar.value, expected->first);
                    ASSERT_EQ(scalar.bytes.size(), expected->second);
                }
            }
        }
    }
}

TEST(Text, RepairsEachMaximalIllFormedSequenceOnce) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\x80z", "a\uFFFDz"},
        {"\xC0\xAF", "\uFFFD\uFFFD"},                     // overlong slash
        {"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},           // overlong in three bytes
        {"\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"}, // overlong in four
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},           // surrogate
        {"\xF0\x9F\x98x", "\uFFFDx"},                     // cut short by another character
        {"\xC3\xC3\xA9", "\uFFFD\u00E9"},
    };
    for (const auto& [text, repaired] : cases)
        EXPECT_EQ(Text::repaired(text), repaired) << testing::PrintToString(text);
    // A sequence that the end of the text cuts short becomes one character, however little is
    // missing.
    for (const std::string& whole : {"\u0080"s, "\u07FF"s, "\u0800"s, "\uD7FF"s, "\uE000"s,
                                     "\uFFFF"s, "\U00010000"s, "\U0010FFFF"s}) {
        EXPECT_EQ(Text::repaired(whole), whole);
        for (std::size_t length = 1; length < whole.size(); ++length)
            EXPECT_EQ(Text::repaired(whole.substr(0, length)), "\uFFFD");
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

TEST(Text, ComposesAccentsAndRepairsBytes) {
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

TEST(Text, CharactersEndWhereTheUnicodeLibraryEndsThem) {
    // At least one scalar of every class, and a consonant and a virama.
    const std::u32string_view scalars = U"a\r\n\u00AD\u0301\u1100\u1161\u11A8\uAC00\uAC01\U0001F1E6"
                                        U"\u0903\u0600\u200D\u2764\u0915\u094D";
    const std::size_t count = scalars.size();
    for (std::size_t number = 0; number < count * count * count * count; ++number) {
        std::string text;
        std::vector<std::size_t> ends;
        std::int32_t state = 0;
        std::int32_t last = 0;
        for (std::size_t rest = number, i = 0; i < 4; ++i, rest /= count) {
            const auto scalar = static_cast<std::int32_t>(scalars[rest % count]);
            if (i > 0 && utf8proc_grapheme_break_stateful(last, scalar, &state))
                ends.push_back(text.size());
            Text::append(text, static_cast<char32_t>(scalar));
            last = scalar;
        }
        ends.push_back(text.size());
        std::vector<std::size_t> found;
        for (Text::Characters walk(text); !walk.atEnd(); walk.next())
            found.push_back((found.empty() ? 0 : found.back()) + walk.current().bytes.size());
        ASSERT_EQ(found, ends) << testing::PrintToString(text);
    }
}

TEST(Text, CharactersCoverAnyBytesCompletely) {
    forAny([](AnyValues any) {
        const std::string bytes = any.bytes();
        std::string joined;
        std::size_t count = 0;
        for (std::string_view rest = bytes; !rest.empty(); ++count) {
            const std::string_view character = Text::firstCharacter(rest).bytes;
            ASSERT_FALSE(character.empty());
            joined += character;
            rest.remove_prefix(character.size());
        }
        EXPECT_EQ(joined, bytes);
        EXPECT_EQ(Text::characterCount(bytes), count);
        EXPECT_EQ(Text::characterCount(Text::repaired(bytes)), count);
    });
}

} // namespace
} // namespace velmo
