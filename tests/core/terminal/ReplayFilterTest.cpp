#include "core/terminal/ReplayFilter.h"

#include "core/terminal/ControlSequence.h"
#include "core/terminal/TerminalModes.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <string>

namespace velmo {
namespace {

std::string passed(std::string_view output, std::size_t slice) {
    ReplayFilter filter;
    Bytes shown;
    for (std::size_t i = 0; i < output.size(); i += slice)
        filter.pass(bytesOf(output.substr(i, slice)), shown);
    return std::string(textOf(shown));
}

struct Case {
    std::string_view output;
    std::string_view shown;
};

// Every output is cut in every place: the replay must not depend on how the output was read.
TEST(ReplayFilter, PassesDisplaySequencesButNoQueries) {
    const Case cases[] = {
        {"plain \t text\r\n", "plain \t text\r\n"},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"a\x05"
         "b\x07"
         "c\x7F\0d",
         "abc"}, // ENQ is answered, BEL rings
        {"\033[1;38;5;200mred\033[m\033[4:3m", "\033[1;38;5;200mred\033[m\033[4:3m"},
        {"\033[2J\033[H\033[10;20H\033[K\033[3A\033[5@\033[2;9r", // movement and erasing
         "\033[2J\033[H\033[10;20H\033[K\033[3A\033[5@\033[2;9r"},
        {"\033[?1049h\033[?25l\033[?2004h\033[4h", "\033[?1049h\033[?25l\033[?2004h\033[4h"},
        {"\033[?25;9999;1l\033[?2026h\033[12h", "\033[?25;1l"}, // modes that are known, alone
        {"\033[c\033[>c\033[=c\033[0c\033[5n\033[6n\033[?6n\033[?15n", ""}, // who are you, where
        {"\033[18t\033[21t\033[x\033[?1$p\033[>q\033[?u\033[?m\033[2i\033[?4;1S", ""},
        {"\033[5;1;1;2;3T\033[3T", "\033[3T"},
        {"\033Z\033n\033[!p\033[2 q\033(0\0337\033=", "\033[!p\033[2 q\033(0\0337\033="},
        {"\033[J\033[0J\033[1J\033[2J\033[?2J\033[3J\033[03J\033[2;3J\033[3:0J\033[?3J\033[4JA",
         "\033[J\033[0J\033[1J\033[2J\033[?2JA"}, // not what has scrolled off
        {"a\033c"
         "b",
         "a\033[?1049;1;5;6;9;12;45;66;69;1000;1002;1003;1005;1006;1007;1015;1016;2004l\033[?7;25h"
         "\033[4l\033>\033[<9u\033[>m\033[r\033(B\x0F\033[m\033[H\033[2Jb"},
        {"\033[?1004h\033[?1004;2004h\033[?1006;1016;69h\033[3;9s", // reports at once, or not
         "\033[?2004h\033[?1006;1016;69h\033[3;9s"},
        {"\033[65;1;1;2;2$x\033[1;1;2;2$z\033[1;1;2;2;1;3;3;1$v\033[1$w",
         "\033[65;1;1;2;2$x\033[1;1;2;2$z\033[1;1;2;2;1;3;3;1$v"},
        {"\033]8;id=1;http://a/?b\alink\033]8;;\033\\\033]7;file://h/d\a\033]133;A\a",
         "\033]8;id=1;http://a/?b\033\\link\033]8;;\033\\\033]7;file://h/d\033\\\033]133;A\033\\"},
        {"\033]8;;http://\xC2\x9B"
         "6n\ax\033]133;\xFF\a\033]9;note\a",
         "x"},
        {"\033]4;1;#123;2;red\a\033]11;rgb:1/2/"
         "3\a\033]104\a\033]112\a\033]4;1;red;2;?\a\033]13;red\a",
         "\033]4;1;#123;2;red\033\\\033]11;rgb:1/2/3\033\\\033]104\033\\\033]112\033\\"},
        {"\033P$qm\033\\x\033P+q544e\033\\y\033Pq#0sixel\nline\033\\z", "xyz"},
        {"\033]52;c;?\a1\033]4;1;?\033\\2\033]10;?\a3\033_Gi=1;a=q\033\\4\033^"
         "pm\033\\5\033Xsos\033\\6",
         "123456"},
        {"\033]0;title\a\033]2;other\033\\", "\033]2;title\a\033]2;other\a"},
        {"\033]2;a\x01\xE2\x80\xAE"
         "b\a",
         "\033]2;ab\a"},
        {"\xC2\x9B"
         "6n\x9B"
         "c\xC2\x9D"
         "52;c;?\x9C",
         "6nc52;c;?"}, // C1 in both forms: what follows is text
        {"\xE2\x82x\xFFy\xC0\xAFz", "\xEF\xBF\xBDx\xEF\xBF\xBDy\xEF\xBF\xBD\xEF\xBF\xBDz"},
        {"\033[3\r1m\033[\x18"
         "6n\033[6\033[1m",
         "\r\033[31m6n\033[1m"}, // controls inside, cancelled, broken off
        {"\033]2;never\033[31mred", "\033[31mred"},
        {"\033[1;2\x80\033[mA\033[<u\033[>1u\033[=3u\033[>4;2m",
         "\033[mA\033[<u\033[>1u\033[=3u\033[>4;2m"},
    };
    for (const Case& c : cases) {
        for (std::size_t slice = 1; slice <= c.output.size(); ++slice)
            EXPECT_EQ(passed(c.output, slice), c.shown)
                << "cut every " << slice << ": " << c.output;
    }
}

TEST(ReplayFilter, BoundsWhatOneSequenceMayBe) {
    const std::string digits(70, '1');
    const std::string title(SequenceReader::maxSequence, 't');
    EXPECT_EQ(passed("\033[" + digits + "mA\033]2;" + title + "\aB", 1000), "AB");

    const std::pair<std::string, bool> cases[] = {
        {"?1004" + times(SequenceReader::maxSequence - 6, ";") + "h", true},
        {"?1004" + times(SequenceReader::maxSequence - 5, ";") + "h", false},
        {"?" + times(ControlSequence::Numbers::max - 1, "1;") + "1004h", true},
        {"?" + times(ControlSequence::Numbers::max, "1;") + "1004h", false},
    };
    for (const auto& [sequence, isObeyed] : cases) {
        ReplayFilter whole;
        ReplayFilter cut;
        whole.follow(bytesOf("\033[" + sequence));
        for (const char byte : "\033[" + sequence)
            cut.follow(bytesOf(std::string_view(&byte, 1)));
        EXPECT_EQ(whole.reportsFocus(), isObeyed) << sequence.size();
        EXPECT_EQ(cut.reportsFocus(), isObeyed) << sequence.size();
    }
}

TEST(ReplayFilter, IsAtRestBetweenSequencesOnly) {
    const std::string_view pieces = "a\033[1m\xE2\x82\xAC\033]2;t\a\033Px\033\\b";
    for (std::size_t end = 1; end <= pieces.size(); ++end) {
        ReplayFilter filtered;
        ReplayFilter followed;
        Bytes ignored;
        filtered.pass(bytesOf(pieces.substr(0, end)), ignored);
        followed.follow(bytesOf(pieces.substr(0, end)));
        const bool atRest = std::string_view("am\xAC\a\\b").contains(pieces[end - 1]);
        EXPECT_EQ(filtered.isAtRest(), atRest) << end;
        EXPECT_EQ(followed.isAtRest(), atRest) << end;
    }
}

TerminalModes modesAfter(std::string_view output, std::size_t slice) {
    TerminalModes modes;
    for (std::size_t i = 0; i < output.size(); i += slice)
        modes.follow(bytesOf(output.substr(i, slice)));
    return modes;
}

TEST(ReplayFilter, KnowsWhetherTheProgramWantsFocusReports) {
    const std::pair<std::string_view, bool> cases[] = {
        {"\033[?1004h", true},       {"\033[?25;1004hx", true}, {"\033[?1004h\033[?1004l", false},
        {"\033[?1004h\033c", false}, {"\033[1004h", false},     {"\033[?1004$p", false},
    };
    for (const auto& [output, wanted] : cases) {
        ReplayFilter passing;
        ReplayFilter following;
        Bytes shown;
        passing.pass(bytesOf(output), shown);
        following.follow(bytesOf(output));
        EXPECT_EQ(passing.reportsFocus(), wanted) << output;
        EXPECT_EQ(following.reportsFocus(), wanted) << output;
        EXPECT_EQ(modesAfter(output, 1).reportsFocus(), wanted) << output;
    }
}

TEST(TerminalModes, GiveAnotherTerminalTheSameModes) {
    const Case cases[] = {
        {"text\r\n\033[2J\033[6n\033]52;c;?\a", ""},
        {"\033[?1049h\033[?1h\033=\033[?25l", "\033[?1h\033[?25l\033="},
        {"\033[?1000;1006h\033[?1004h\033[?2004h", "\033[?1000h\033[?1006h\033[?2004h"},
        {"\033[>4;2m\033[>1;1m\033[>1m\033[>99;1m", "\033[>4;2m"},
        {"\033[>4;2m\033[>m", ""},
        {"\033]4;7;red;9;#123\a\033]11;blue\a\033]10;?\a\033]4;300;red\a\033]104;7\a",
         "\033]11;blue\033\\\033]4;9;#123\033\\"},
        {"\033]4;7;red\a\033]12;red\a\033]104\a\033]112\a", ""},
        {"\033[?1049h\033[?25l\033[?1049l\033[?25h\033=\033>", ""},
        {"\033[?7l\033[4h", "\033[?7l\033[4h"},
        {"\033[>1u\033[>5u\033[=7u\033[<u\033[>3u", "\033[>1u\033[>3u"},
        {"\033[<99u\033[=1u", ""},
        {"\033(0\033[3;20r\033[?6h\033[1m\033[4 q", "\033[4 q"}, // the screen knows the others
        {"\033]7;file://h/d\a\033]7;file://h/e\a", "\033]7;file://h/e\033\\"},
        {"\033]2;one\a\033]0;two\033\\", "\033]2;two\a"},
        {"\033[?1049h\033[1m\033]2;t\a\033[>1u\033c", ""},
        {"\033[?1;69h\033[?2004h\033[1m\033[!p", "\033[?2004h"},
        {"\033[4h\033[!p", ""},
        {"\033=\033[!p", ""},
    };
    for (const Case& c : cases) {
        for (std::size_t slice = 1; slice <= c.output.size(); ++slice)
            EXPECT_EQ(modesAfter(c.output, slice).sequences(), c.shown)
                << slice << ": " << c.output;
    }
}

// `PtyAttach::reset` follows, which ends the attributes, the keypad and one of the enhancements.
TEST(TerminalModes, AreUndone) {
    const Case cases[] = {
        {"text\033[1m\033=\033]2;title\a", ""},
        {"\033[>4;2m\033[2 q", "\033[>4m\033[0 q"},
        {"\033[3;9r", "\0337\033[r\0338"},
        {"\033[?1049h\033[3;9r\033[?6h\033[?7;25l", "\033[r\033[?25h\033[?7h\033[?6l\033[?1049l"},
        {"\033[?6h\033[?5h", "\033[?6l\033[999H\033[?5l"},
        {"\033[?1004;2031;2048;2026h", "\033[?2048l\033[?2031l\033[?2026l\033[?1004l"},
        {"\033[4h\033(0\033[>1u\033[>1u\033[>1u", "\033[4l\033[<2u\033(B"},
        {"\033]4;7;red\a\033]12;red\a", "\033]112\033\\\033]104;7\033\\"},
        {"\033[>4;2m\033[3;9r\033c", ""},
        {"\033(0\033(B\033[3;20r\033[r", ""},
        {"\033(0\033[3;20r\033[!p", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(modesAfter(c.output, 1).undo(), "\x0F" + std::string(c.shown)) << c.output;
}

TEST(TerminalModes, StayBelowOneKibibyteForAnyOutput) {
    std::string output;
    for (int i = 0; i < 1000; ++i)
        output += "\033[>" + std::to_string(i) + "u";
    const std::string sequences = modesAfter(output, 100).sequences();
    EXPECT_LT(sequences.size(), 1024U);
    EXPECT_TRUE(sequences.starts_with("\033[>992u")) << "the oldest of nine is forgotten";
}

} // namespace
} // namespace velmo
