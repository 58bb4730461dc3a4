#include "sessions/Screen.h"

#include "core/support/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmo {
namespace {

constexpr PtyFrame::Size small{.cols = 10, .rows = 4};

std::string linesOf(const Screen& screen) {
    std::string text;
    for (const std::string& line : screen.text())
        text += line + "/";
    return text;
}

struct Shown {
    std::string_view output;
    std::string_view text; ///< with "/" behind each line
    Screen::Place cursor;
};

// Each screen is cut in every place, and drawn on another screen, where it must look the same.
TEST(Screen, ShowsWhatATerminalShows) {
    const Shown cases[] = {
        {"", "", {1, 1}},
        {"one\r\ntwo", "one/two/", {2, 4}},
        {"0123456789", "0123456789/", {1, 10}},
        {"0123456789ab", "0123456789/ab/", {2, 3}},
        {"0123456789\rx\r\n", "x123456789/", {2, 1}},
        {"a\r\nb\r\nc\r\nd\r\ne", "b/c/d/e/", {4, 2}},
        {"0123456789\033[?7h\033[3;2ra", "0123456789/a/", {2, 2}}, // neither moves the cursor
        {"0123456789\033[?7la", "012345678a/", {1, 10}},
        {"\033[?7l0123456789ab", "012345678b/", {1, 10}},
        {"abc\b\bX\tY\033[3Z.", ".Xc     Y/", {1, 2}},
        {"\033[3;4Hx\033[2Ay\033[2Dz\033[By\033[9E.", "   zy/    y/   x/./", {4, 2}},
        {"\033[9;99Hx\033[d\033[2Gy", " y///         x/", {1, 3}},
        {"abcdef\033[3G\033[2P\033[@.\033[2X", "ab./", {1, 4}},
        {"abcdef\033[2G\033[4hxy", "axybcdef/", {1, 4}},
        {"a\r\nb\r\nc\033[2;2H\033[L\033[1;1H\033[M", "/b/c/", {1, 1}},
        {"abc\r\ndef\r\nghi\033[2;2H\033[1J\033[K", "//ghi/", {2, 2}},
        {"abc\r\ndef\r\nghi\033[2;2H\033[J\033[1K", "abc/", {2, 2}},
        {"abc\033[3J\033[2J", "", {1, 4}},
        {"a\r\nb\r\nc\r\nd\033[2;3r\n\033[3Hx\n\033[2H\033M.", "a/./x/d/", {2, 2}},
        {"a\r\nb\r\nc\r\nd\033[2;3r\033[?6h\033[9;2H.", "a/b/c./d/", {2, 3}},
        {"a\r\nb\r\nc\r\nd\033[S\033[2T", "//b/c/", {4, 2}},
        {"abcd\r\nefgh\033[?69h\033[2;3s\033[1;1H\033[2;2H\033[L", "abcd/e  h/ fg/", {2, 2}},
        {"\0337\033[3;3Hx\0338y", "y//  x/", {1, 2}},
        {"main\033[?1049halt\033[?1049l.", "main./", {1, 6}},
        {"main\033[?1049h\033[Halt", "alt/", {1, 4}},
        {"main\033[?47h\033[Halt\033[?47lx", "maix/", {1, 5}},
        {"\033(0lqx\033(Bq\033)0\016x\017x", "\u250C\u2500\u2502q\u2502x/", {1, 7}},
        {"\u4E16\u754Cx", "\u4E16\u754Cx/", {1, 6}},
        {"012345678\u4E16", "012345678/\u4E16/", {2, 3}},
        {"\u4E16\033[2Gx", " x/", {1, 3}},
        {"\u4E16\033[1Gx", "x/", {1, 2}},
        {"e\u0301x\u0301\u0302", "e\u0301x\u0301\u0302/", {1, 3}},
        {"a\033[3b\033[7b", "aaaaaaaaaa/a/", {2, 2}},
        {"a\033[99b", "aaaaaaaaaa/a/", {2, 2}}, // no more than a row at once
        {"a\033[3gb\tx\033[5G\033H\r\ty", "ab  y    x/", {1, 6}},
        {"\033[1mx\033c\r\ny", "/y/", {2, 2}},
        {"\033[20hx\ny", "x/y/", {2, 2}},
        {"\033[2;3r\033[?6h\033[!p\033[H.", "./", {1, 2}},
        {"01234567\u4E16", "01234567\u4E16/", {1, 10}},
        {"012345678\u4E16\033[2;1Hxy", "012345678/xy/", {2, 3}},
        {"0123456789ab\033[2K\r\nz", "0123456789//z/", {3, 2}},
        {"0123456789a\r\033[P\nz", "0123456789//z/", {3, 2}},
        {"\033[?69h\033[3;5s\033[1;3Habc\0337\033[?69l\033[H", "  abc/", {1, 1}},
        {"\033[?69h\033[3;5s\033[1;3Habc\033[?69lx", "  abx/", {1, 6}},
        {"0123456789ab\033[2;1H\033]133;A\a", "0123456789/ab/", {2, 1}},
        {"\u4E16a\r\nbcd\033[?69h\033[2;9s\033[1;2H\033[M", " cd/b/", {1, 2}},
        {"x\033[2;3r\033#8\033[2;9H\033[J", "EEEEEEEEEE/EEEEEEEE/", {2, 9}},
        {"\033[2;3r\033[?6h\033[2;2Ha\0337\033[?6l\033[Hb", "b// a/", {1, 2}},
        {"\033[2;3r\033[?6h\033[2;2Ha\0337\033[1;2rb\0338c", "b/  c/ a/", {2, 4}},
        {"a\0337b\033[?47h\033[2Hc\033[?47l", "ab/", {2, 2}},
        {"a\0337b\033[?1049hc\033[?1049ld\0338e", "abe/", {1, 4}},
        {"a\n\033[5b\vb\033[2b", "a// bbb/", {3, 5}},
        {"\033[?1049h\033[4;10Hxy\033[2J", "", {4, 2}},
        {"\033P+q544e\033\\x\033]0;title\ay\033[6n\033[>cz", "xyz/", {1, 4}},
    };
    for (const Shown& c : cases) {
        for (std::size_t cut = 0; cut <= c.output.size(); ++cut) {
            Screen screen(small);
            screen.follow(bytesOf(c.output.substr(0, cut)));
            screen.follow(bytesOf(c.output.substr(cut)));
            EXPECT_EQ(linesOf(screen), c.text) << c.output;
            EXPECT_EQ(screen.cursor(), c.cursor) << c.output;
            Screen other(small);
            other.follow(bytesOf(screen.drawn(small)));
            EXPECT_EQ(linesOf(other), c.text) << c.output;
            EXPECT_EQ(other.cursor(), c.cursor) << c.output;
            EXPECT_EQ(other.drawn(small), screen.drawn(small)) << c.output;
            for (Screen* each : {&screen, &other})
                each->follow(bytesOf("x\n\tw\0338y\033[?1049l\nz"));
            EXPECT_EQ(other.drawn(small), screen.drawn(small)) << "and goes on alike: " << c.output;
        }
    }
}

TEST(Screen, DrawsStylesLinksPromptsAndModes) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"\033[1;3;4;31;42mx", "\033[0;1;3;4;31;42mx"}, // which may be brightened, unlike 38;5;1
        {"\033[38;5;1;95;107mx\033[93mx", "\033[0;95;107mx\033[0;93;107mx"},
        {"\033[38;2;1;2;3;48;5;200mx", "\033[0;38;2;1;2;3;48;5;200mx"},
        {"\033[38:2::1:2:3;48:5:200;58:2:7:8:9mx", "\033[0;38;2;1;2;3;48;5;200;58;2;7;8;9mx"},
        {"\033[4:3;97;100mx\033[24;39;49mz", "\033[0;4:3;97;100mx\033[0mz"},
        {"\033[2;5;7;8;9;53mx\033[22;25;27;28;29;55;23mz", "\033[0;2;5;7;8;9;53mx\033[0mz"},
        {"\033[44m\033[Kx", "\033[0;44mx\033[K"},
        {"\033]8;id=1;http://a\033\\x\033]8;;\033\\y",
         "\033[0m\033]8;id=1;http://a\033\\x\033[0m\033]8;;\033\\y"},
        {"\033]133;A\a$ ", "\033]133;A\033\\"},
        {"\033[?2004h\033[>4;2m\033]4;1;red\a\033]7;file://h/d\a",
         "\033[?2004h\033[>4;2m\033]4;1;red\033\\\033]7;file://h/d\033\\"},
        {"\033[2;3r\033[?69h\033[3;9s", "\033[2;3r\033[3;9s"},
        {"\033[2;3r\033[?6h\033[2;2H", "\033[?6h\033[2;2H"},
        {"0123456789", "\033[1;10H\033[0m9"}, // so that the next character goes to the next row
    };
    for (const auto& [output, drawn] : cases) {
        Screen screen(small);
        screen.follow(bytesOf(output));
        EXPECT_TRUE(screen.drawn(small).contains(drawn)) << output << "\n" << screen.drawn(small);
    }
}

TEST(Screen, IsDrawnOnATerminalOfAnotherSizeWithoutBreakingItsLines) {
    const std::pair<std::string_view, std::string_view> lines[] = {
        {"0123456789abcdef\r\nlast\r\n\033[2;3H", "0123456789abcdef/last/"},
        {"         \u4E16\u4E16\r\n", "         \u4E16\u4E16/"},
        {"          ab\r\n", "          ab/"},
        {"0123456789abcdef\033[1;3H\033[P", "013456789/abcdef/"},
        {"0123456789\r\nab", "0123456789/ab/"},
    };
    for (const auto& [output, text] : lines) {
        Screen screen(small);
        screen.follow(bytesOf(output));
        Screen wide({.cols = 30, .rows = 9});
        wide.follow(bytesOf("mine\r\n" + screen.drawn(std::nullopt)));
        EXPECT_EQ(linesOf(wide), "mine/" + std::string(text));
    }
    Screen screen(small);
    screen.follow(bytesOf("\033[?1049h\033[Hin the way\033[4Hx"));
    Screen narrow({.cols = 5, .rows = 3});
    narrow.follow(bytesOf(screen.drawn(PtyFrame::Size{.cols = 5, .rows = 3})));
    EXPECT_EQ(linesOf(narrow), "in th/");
}

// Behind each size a "." is written, where the cursor is then.
TEST(Screen, ChangesItsSizeAsATerminalThatKeepsWhatScrollsOff) {
    struct Resized {
        std::string_view output;
        std::vector<PtyFrame::Size> sizes;
        std::string_view text;
    };

    const auto size = [](std::uint16_t cols, std::uint16_t rows) {
        return PtyFrame::Size{.cols = cols, .rows = rows};
    };
    const Resized cases[] = {
        {"a\r\nb\r\nc\r\nd\r\ne\r\nf", {size(10, 5)}, "b/c/d/e/f./"},
        {"a\r\nb\r\nc\r\nd\r\ne\r\nf", {size(10, 9)}, "a/b/c/d/e/f./"},
        {"a\r\nb\r\nc\r\nd\033[9S", {size(10, 6)}, "c/d//// ./"},
        {"a\r\nb\r\nc\r\nd", {size(10, 2)}, "c/d./"},
        {"a\r\nb\r\nc\r\nd", {size(10, 2), size(10, 4)}, "a/b/c/d../"},
        {"a\r\nb\r\nc\r\nd\033[2;3H", {size(10, 2)}, "a/b ./"},
        {"a\r\nb\r\nc\r\nd\033[2;3H", {size(10, 1), size(10, 3)}, "a/b ../"},
        {"a\r\nb\r\nc\r\nd\r\ne\033[2J", {size(10, 5)}, "/// ./"},
        {"a\r\nb\r\nc\r\nd\r\ne\033[H\033[J", {size(10, 5)}, "./"},
        {"a\r\nb\r\nc\r\nd\r\ne\033[3J", {size(10, 5)}, "b/c/d/e./"},
        {"a\r\nb\r\nc\r\nd\r\ne\033c", {size(10, 5)}, "./"},
        {"a\r\nb\r\nc\r\nd\r\ne\033[1;1H\033[M", {size(10, 5)}, "a/./d/e/"},
        {"a\r\nb\r\nc\r\nd\033[2;3r\033[3H\n", {size(10, 6)}, "b/a/c/./d/"},
        {"a\r\nb\r\nc\r\nd\033[1;3r\033[3H\n", {size(10, 6)}, "a/b/c/./d/"},
        {"a\r\nb\r\nc\r\nd\033[?69h\033[2;9s\033[4H\n", {size(10, 6)}, "a/b/c/./"},
        {"a\033[?1049h\033[4H\n\n\033[?1049l", {size(10, 6)}, "a./"},
        {"0123456789ab\r\nc", {size(14, 4)}, "0123456789ab/c./"},
        {"0123456789ab\r\nc", {size(4, 5)}, "0123/4567/89ab/c./"},
        {"0123456789\r\nx", {size(3, 4), size(10, 4)}, "0123456789/x../"},
        {"0123456789\r\nx", {size(3, 4)}, "345/678/9/x./"},
        {"0123456789012345\033[1;5H", {size(20, 4)}, "0123.56789012345/"},
        {"0123456789012345\033[1;5H", {size(3, 6)}, "012/3.5/678/901/234/5/"},
        {"0123456789012345\033[2;5H", {size(6, 4)}, "012345/678901/23.5/"},
        {"0123456789012345\r\n\n\n\033[H", {size(4, 4)}, "89.1/2345/"},
        {"0123456789\r\n0123456789\033[H", {size(4, 4)}, ".9/0123/4567/89/"},
        {"0123456789", {size(12, 4)}, "0123456789./"},
        {"0123456789", {size(5, 4)}, "01234/56789/./"},
        {"0123456789", {size(10, 3)}, "0123456789/./"},
        {"\033[1;9H", {size(5, 4)}, "/   ./"},
        {"01234567\u4E16\u4E16", {size(9, 4)}, "01234567/\u4E16\u4E16./"},
        {"01234567\u4E16\u4E16", {size(9, 4), size(13, 4)}, "01234567\u4E16\u4E16././"},
        {"012345678\u4E16", {size(12, 4)}, "012345678\u4E16./"},
        {"\u4E16\u4E16", {size(1, 9), size(10, 9)}, "\u4E16\u4E16../"},
        {"0123456789ab\033[2H\033]133;A\a", {size(14, 4)}, "0123456789/.b/"},
        {"0123456789\033[44m\033[K\r\nx", {size(14, 4)}, "012345678/x./"},
        {"a\r\nb\r\nc\033[?1049h\033[H0123456789\r\nd\r\ne\r\nf", {size(5, 2)}, "e/f./"},
        {"0123456789\033[?1049h\033[H\033[?1049l", {size(5, 4)}, "01234/56789/./"},
        {"0123456789a\033[?1049h\033[3H\033[2;3r", {size(20, 4)}, "./"},
    };
    for (const auto& [output, sizes, text] : cases) {
        Screen screen(small);
        screen.follow(bytesOf(output));
        for (const PtyFrame::Size each : sizes) {
            screen.resize(each);
            screen.follow(bytesOf("."));
        }
        EXPECT_EQ(linesOf(screen), text) << output;
        Screen other(screen.size());
        other.follow(bytesOf(screen.drawn(screen.size())));
        EXPECT_EQ(other.drawn(screen.size()), screen.drawn(screen.size())) << output;
        screen.follow(bytesOf("\033[?1049l"));
        EXPECT_EQ(linesOf(screen).starts_with("0123456789a/"),
                  output.starts_with("0123456789a\033"))
            << "the main screen, too: " << output;
    }
}

TEST(Screen, IsDrawnAnewOverWhatATerminalShows) {
    const std::string_view screens[] = {
        "",
        "one\r\n0123456789ab\r\n\033[44mx\033[K\033[m\033[2;3r\033[?6h",
        "\033]133;A\a$ \033]8;;http://a\a0123456789\033[20h\033[3g\033[4G\033H",
        "a\r\nb\r\nc\r\n0123456789\0337",
        "main\033[?1049h\033[4Hlast\033[?69h\033[2;5s",
    };
    const std::string_view befores[] = {
        "1\r\n2\r\n3\r\n4\r\n5\r\n6",
        "1\r\n2\r\n3\r\n4\r\n5\r\n6\033[2;3r\033[?6h\033[41;1m\033[4h\016\033)0\033]8;;http://b\a",
    };
    for (const std::string_view output : screens) {
        for (const std::string_view before : befores) {
            Screen screen(small);
            screen.follow(bytesOf(output));
            Screen terminal(small);
            terminal.follow(bytesOf(before));
            if (screen.isAlternate())
                terminal.follow(bytesOf("\033[?1049hin the way"));
            terminal.follow(bytesOf(screen.drawnAnew(Screen::Part::all)));
            EXPECT_EQ(terminal.drawn(small), screen.drawn(small)) << output << before;
            terminal.follow(bytesOf("\033[?1049l"));
            terminal.resize({.cols = 10, .rows = 6});
            EXPECT_TRUE(linesOf(terminal).starts_with("1/2/")) << "the lines above are as before";
        }
    }
}

// What scrolls off the top is left out, where much output comes at once.
TEST(Screen, ShowsTheSameHoweverItsOutputComes) {
    const auto repeated = [](std::string_view line) {
        std::string all;
        for (int i = 0; i < 150; ++i)
            all.append(line);
        return all;
    };
    const std::string_view befores[] = {"",
                                        "a\r\nb\r\nc\r\nd\033[H",
                                        "\033[2;3r",
                                        "\033[?7lab",
                                        "\033[4h",
                                        "\033[?69h\033[2;5s",
                                        "0123456789",
                                        "\033[44m\016\033)0",
                                        "\033[?1049h\033[2H",
                                        "\033[20hx",
                                        "\033]8;;http://a\a\033[1m"};
    const std::string middles[] = {
        repeated("line\r\n"),
        repeated("\033[31mred\033[m\033[K\r\n") + "\033[4mq",
        repeated("\033[32;1mq\033[38;2;1;2;3m\r\n"),
        repeated("\033[m\033[0;1m\033[3;31m\r\n") + "x",
        "\033[4;35m" + repeated("line\r\n"),
        "\033[4m\033[0;35m" + repeated("line\r\n"),
        repeated("raw\n"),
        repeated("a long line that wraps\r\n\n\v"),
        repeated("q\r\n") + "\033[2;2H" + repeated("r\r\n\b"),
        repeated("\u4E16e\u0301\r\n") + "\016" + repeated("q\r\n"),
        repeated("\r\n") + "\033[3b",
        repeated("a\033]133;A\a\r\n\033[2A\r\n"),
        repeated("one line without any end "),
        "x" + repeated("0123456789") + "\r\nshort",
    };
    for (const std::string_view before : befores) {
        for (const std::string& middle : middles) {
            const std::string output = std::string(before) + middle;
            const PtyFrame::Size tall{.cols = 12, .rows = 90};
            Screen pieces(small);
            for (const char byte : output)
                pieces.follow(bytesOf(std::string_view(&byte, 1)));
            Screen tallPieces = pieces;
            tallPieces.resize(tall);
            for (const std::size_t cut : {std::size_t{0}, before.size(), output.size() / 2}) {
                Screen whole(small);
                whole.follow(bytesOf(std::string_view(output).substr(0, cut)));
                Screen ahead = whole;
                whole.follow(bytesOf(std::string_view(output).substr(cut)));
                ahead.followAhead(bytesOf(std::string_view(output).substr(cut)));
                ahead.resize(tall);
                EXPECT_EQ(ahead.drawn(tall), tallPieces.drawn(tall))
                    << before << middle.substr(0, 20) << cut;
                EXPECT_EQ(whole.drawn(small), pieces.drawn(small))
                    << before << middle.substr(0, 20) << cut;
            }
        }
    }
}

TEST(Screen, AnswersAsATerminalDoes) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"\033[5n\033[?5n\033[15n\033[n", "\033[0n"},
        {"ab\r\nc\033[6nd\033[6n", "\033[2;2R\033[2;3R"},
        {"\033[2;3r\033[?6h\033[2;3H\033[6n", "\033[2;3R"},
        {"0123456789\033[6n\u4E16\033[6n", "\033[1;10R\033[2;3R"},
        {"a\033[1@\033[J\033[2K\033[S\033#8\u0301\033]133;A\a\033[4hb\033[6n", "\033[1;2R"},
        {"\n\n\n\n\n\n\033[?1049h\033[5;9H\033[?1049l\033[6n", "\033[4;1R"},
        {"\033[c\033[0c", "\033[?64;1;2;6;9;15;16;17;18;21;22;28c"
                          "\033[?64;1;2;6;9;15;16;17;18;21;22;28c"},
        {"\033[>c\033[=c\033[?c\033[1c\033[>1c\033[!c", "\033[>41;379;0c"},
    };
    for (const auto& [output, answers] : cases) {
        Screen screen(small);
        screen.follow(bytesOf(output));
        EXPECT_EQ(screen.takeAnswers(), "") << "before it is to answer";
        screen.follow(bytesOf("\033c"));
        screen.beginAnswering();
        screen.follow(bytesOf(output));
        EXPECT_EQ(screen.takeAnswers(), answers) << output;
        EXPECT_EQ(screen.takeAnswers(), "");
        EXPECT_EQ(screen.cells(), 0U) << output;
    }
    Screen resized(small);
    resized.beginAnswering();
    resized.follow(bytesOf("\033[4;9H\0337"));
    resized.resize({.cols = 5, .rows = 2});
    resized.follow(bytesOf("\033[6n\033[H\0338\033[6n"));
    EXPECT_EQ(resized.takeAnswers(), "\033[2;5R\033[2;5R");
}

TEST(Screen, TakesLittleMemoryWhateverItShows) {
    constexpr PtyFrame::Size largest{.cols = 1000, .rows = 500};
    Screen screen(largest);
    std::string output = "\033[44m\033[2J\033#8";
    for (int i = 0; i < 3000; ++i) {
        const std::string n = std::to_string(i);
        output += "\033[" + std::to_string(i % 500) + ";9" + "H\033[38;2;1;"
                  + std::to_string(i % 256) + ";" + std::to_string(i / 256) + "m\033]8;;http://" + n
                  + "\ax\u0301\u0302" + n + std::string(900, '.') + "\033[2P\033[2@"
                  + (i % 100 == 0 ? "\033[?1049h" : "") + (i % 100 == 50 ? "\033[?1049l" : "");
    }
    screen.follow(bytesOf(output));
    EXPECT_LE(screen.cells(), Screen::maxCells + 1024);
    EXPECT_GT(screen.cells(), Screen::maxCells / 2);
    EXPECT_FALSE(screen.isWhole());
    EXPECT_TRUE(screen.drawn(largest).contains("2999" + std::string(800, '.')));
    screen.follow(bytesOf("\033c"));
    EXPECT_TRUE(screen.isWhole());
    for (int i = 0; i < 100; ++i)
        screen.follow(bytesOf("\033[H" + std::string(900, '.') + "\033[S"));
    EXPECT_LE(screen.cells(), Screen::maxCells + 1024);
    EXPECT_GT(screen.cells(), Screen::maxCells / 2);
    EXPECT_TRUE(screen.isWhole()) << "rows above the screen are forgotten first";
    Screen low(small);
    for (int i = 0; i < 100; ++i)
        low.follow(bytesOf("\r\n" + std::to_string(i)));
    low.resize({.cols = 10, .rows = 500});
    EXPECT_EQ(low.text().size(), ScreenGrid::maxAbove + 4);
    Screen styled(small);
    styled.follow(bytesOf("\033[38;2;7;7;7mabove\033[m\r\n\n\n\n"));
    for (int i = 0; i < 3000; ++i)
        styled.follow(bytesOf("\033[4H\033[48;5;" + std::to_string(i % 256) + ";38;5;"
                              + std::to_string(i / 256) + "mx"));
    styled.resize({.cols = 10, .rows = 5});
    EXPECT_TRUE(styled.drawn(styled.size()).contains("\033[0;38;2;7;7;7mabove"));
    Screen alternate(small);
    alternate.follow(bytesOf("\033[?1049h"));
    for (int i = 0; i < 100; ++i)
        alternate.follow(bytesOf("x\n"));
    EXPECT_LE(alternate.cells(), 4U * 32) << "nothing is kept of the alternate screen";
}

} // namespace
} // namespace velmo
