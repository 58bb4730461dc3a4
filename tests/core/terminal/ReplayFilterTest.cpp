#include "core/terminal/ReplayFilter.h"

#include "core/terminal/TerminalModes.h"

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
        {"\033Z\033n\033[!p\033[2 q\033(0\0337\033=\033c", "\033[!p\033[2 q\033(0\0337\033=\033c"},
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

std::string followed(std::string_view output, std::size_t slice) {
    TerminalModes modes;
    for (std::size_t i = 0; i < output.size(); i += slice)
        modes.follow(bytesOf(output.substr(i, slice)));
    return modes.sequences();
}

TEST(TerminalModes, GiveAnotherTerminalTheSameModes) {
    const Case cases[] = {
        {"text\r\n\033[2J\033[6n\033]52;c;?\a", ""},
        {"\033[?1049h\033[?1h\033=\033[?25l", "\033[?1049h\033[?1h\033[?25l\033="},
        {"\033[?1000;1006h\033[?1004h\033[?2004h", "\033[?1000h\033[?1006h\033[?1004h\033[?2004h"},
        {"\033[?1049h\033[?25l\033[?1049l\033[?25h\033=\033>", ""},
        {"\033[?7l\033[4h", "\033[?7l\033[4h"},
        {"\033[>1u\033[>5u\033[=7u\033[<u\033[>3u", "\033[>1u\033[>3u"},
        {"\033[<99u\033[=1u", ""},
        {"\033(0\033[3;20r\033[4 q", "\033(0\033[3;20r\033[4 q"},
        {"\033(0\033(B\033[3;20r\033[r", ""},
        {"\033[1m\033[31m\033[0;4mx\033[7m", "\033[0;4m\033[7m"},
        {"\033[1m\033[m", ""},
        {"\033]2;one\a\033]0;two\033\\", "\033]2;two\a"},
        {"\033[?1049h\033[1m\033]2;t\a\033[>1u\033c", ""},
        {"\033[?1h\033[?2004h\033[1m\033[!p", "\033[?2004h"},
        {"\033[3;20r\033[!p", ""},
        {"\033[4h\033[!p", ""},
        {"\033=\033[!p", ""},
        {"\033(0\033[!p", ""},
    };
    for (const Case& c : cases) {
        for (std::size_t slice = 1; slice <= c.output.size(); ++slice)
            EXPECT_EQ(followed(c.output, slice), c.shown) << slice << ": " << c.output;
    }
}

TEST(TerminalModes, StayBelowOneKibibyteForAnyOutput) {
    std::string output;
    for (int i = 0; i < 1000; ++i)
        output += "\033[38;2;1;2;" + std::to_string(i % 256) + "m\033[>" + std::to_string(i) + "u";
    const std::string sequences = followed(output, 100);
    EXPECT_LT(sequences.size(), 1024U);
    EXPECT_TRUE(sequences.ends_with("\033[38;2;1;2;231m"));
    EXPECT_TRUE(sequences.starts_with("\033[>992u")) << "the oldest of nine is forgotten";
}

} // namespace
} // namespace velmo
