#include "core/terminal/PtyAttach.h"

#include "core/terminal/SpelledDetachKey.h"
#include "tests/Texts.h"

#include <algorithm>

namespace velmo {
namespace {

using namespace PtyAttach;

TEST(PtyAttach, ReadsItsArguments) {
    EXPECT_EQ(parseArguments(words("--probe")), Arguments(ProbeArguments{}));
    for (const char* path : {"/a/b", "/a/b/"}) // a folder is refused when it is read
        EXPECT_EQ(parseArguments(Strings{"--ticket-file", path}), Arguments(TicketArguments{path}));
    expectRefused([](const std::string& line) { return parseArguments(words(line)); },
                  {"", "--ticket-file a/b", "--ticket-file /a/../b", "--ticket-file",
                   "--ticket-file /a --probe", "--probe x", "--ticket-file=/a"});
}

TEST(AttachLabels, AreFilledInOnePass) {
    EXPECT_EQ(fill(english().exit, "3"), "The program ended (code 3).");
    EXPECT_EQ(fill("{code} {code}{Code}{code", "{code}"), "{code} {code}{Code}{code");
    EXPECT_EQ(fill(english().ended, "3"), "This session had already ended.");
}

TEST(AttachLabels, LoseExactlyTheScalarsThatATerminalObeys) {
    for (char32_t c = 0; c < 0x20000; ++c) {
        if (c == 0xD800)
            c = 0xE000; // surrogates are no scalars
        const bool lost = c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x61C || c == 0x200E
                          || c == 0x200F || (c >= 0x2028 && c <= 0x202E)
                          || (c >= 0x2066 && c <= 0x2069);
        std::string text = "a";
        Text::append(text, c);
        EXPECT_EQ(sanitizeLabel(text), lost ? "a" : text) << std::uint32_t{c};
    }
    EXPECT_EQ(sanitizeLabel("\x9B\xFF z"), "\uFFFD\uFFFD z"); // a raw C1 byte is no scalar
}

TEST(AttachLabels, AreCutBetweenCharacters) {
    const std::string text = times(201, "e\u0301");
    EXPECT_EQ(sanitizeLabel(text), times(200, "e\u0301"));
    EXPECT_EQ(sanitizeTitle(text), times(120, "e\u0301"));
    EXPECT_EQ(titleSequence("\a" + text + "\x1B"), "\x1B]2;" + times(120, "e\u0301") + "\a");
}

TEST(DetachKey, DetachesIfItsKeyFollowsTheEscapeWithinASecond) {
    // A step is a word to type ("]" is the escape), "tick", or the milliseconds that pass. A result
    // is the forwarded text, with "!" if the user detached, or "-" for nothing.
    const struct {
        const char* steps;
        const char* results;
    } histories[] = {
        {.steps = "plain ]]d ]x d tick", .results = "plain ]d ]x d -"},
        {.steps = "a]db d ]D", .results = "a! d !"},
        {.steps = "]]]d ] 999 d", .results = "]! - !"},
        {.steps = "] 999 tick 1 tick 5000 tick d", .results = "- - ] - d"},
        {.steps = "] 1000 d ] 1000 ] d", .results = "- ]d - ] !"},
    };

    for (const auto& [steps, results] : histories) {
        DetachKey key;
        std::int64_t now = -500;
        Strings all;
        for (std::string step : words(steps)) {
            if (step.front() >= '0' && step.front() <= '9') {
                now += std::stoll(step);
                continue;
            }
            std::ranges::replace(step, ']', '\x1D');
            const auto result = step == "tick" ? DetachKey::Result{.forward = key.tick(now)}
                                               : key.feed(bytesOf(step), now);
            std::string told(textOf(result.forward));
            std::ranges::replace(told, '\x1D', ']');
            told += result.detach ? "!" : "";
            all.push_back(told.empty() ? "-" : told);
        }
        EXPECT_EQ(all, words(results)) << steps;
    }
}

/// Plays a history: what is typed, and the milliseconds that pass before it. Returns what reached
/// the program, and "!" for a detach.
std::string playedOnSpelledKeys(const std::vector<std::pair<std::string, int>>& history) {
    SpelledDetachKey key;
    std::int64_t now = 0;
    std::string told;
    const auto tell = [&](ByteView bytes) { told += textOf(bytes); };
    for (const auto& [keys, wait] : history) {
        const std::int64_t end = now + wait;
        for (auto due = key.deadlineMs(); due && *due <= end; due = key.deadlineMs())
            tell(key.tick(now = *due));
        now = end;
        const auto result = key.feed(bytesOf(keys), now);
        tell(result.forward);
        told += result.detach ? "!" : "";
    }
    tell(key.tick(now + DetachKey::timeoutMs));
    return told;
}

TEST(SpelledDetachKey, DetachesHoweverTheTerminalSpellsTheKeys) {
    const std::vector<std::string> escapes{"\x1D",         "\033[27;5;93~",   "\033[93;5u",
                                           "\033[93;5:1u", "\033[93;5:2u",    "\033[93:125;5u",
                                           "\033[93;69u",  "\033[93;133;29u", "\033[93;197u"};
    const std::vector<std::string> finals{"d",
                                          "D",
                                          "\033[100u",
                                          "\033[100;1u",
                                          "\033[100;2u",
                                          "\033[100:68;2:1u",
                                          "\033[100;65;68u",
                                          "\033[68;2u",
                                          "\033[27;2;68~",
                                          "\033[100;129u"};
    const std::vector<std::string> without{"", "\033[93;5:3u", "\033[57442;5:3u", "\033[57441;2u",
                                           "\033[1;1:3A"};
    for (const std::string& escape : escapes) {
        for (const std::string& final : finals) {
            for (const std::string& between : without) {
                EXPECT_EQ(playedOnSpelledKeys({{"a" + escape + between + final + "lost", 0}}),
                          "a!");
                EXPECT_EQ(playedOnSpelledKeys({{escape, 0}, {between, 400}, {final, 400}}), "!");
            }
        }
        EXPECT_EQ(playedOnSpelledKeys({{escape, 0}, {"d", 1000}}), escape + "d") << "too late";
        EXPECT_EQ(playedOnSpelledKeys({{escape + escape + "d", 0}}), escape + "d") << "once";
        EXPECT_EQ(playedOnSpelledKeys({{escape + "\033[93;5:3u\033[A", 0}}),
                  escape + "\033[93;5:3u\033[A")
            << "in the order in which they were typed";
    }
}

TEST(SpelledDetachKey, LetsEveryOtherKeyPassAsItWasTyped) {
    const std::string others[] = {
        "\033",           "\033[",         "\033[93;5",
        "\033[93u",       "\033[93;6u",    "\033[93;7u",
        "\033[125;5u",    "\033[93;5:3u",  "\033[27;6;93~",
        "\033[27;5;94~",  "\033[28;5;93~", "\033[27;5;93;1~",
        "\033[?93;5u",    "\033[93;5 u",   "\033[93;5A",
        "\033[100u",      "\033[<0;9;9M",  "\033]93;5u",
        "\033[93;5\x18",  "\033[93;-5u",   "\033[" + std::string(100, '9') + "u",
        "\xFF\0\033\033["};
    for (const std::string& other : others) {
        EXPECT_EQ(playedOnSpelledKeys({{other, 0}, {"d", 60}}), other + "d");
        EXPECT_EQ(playedOnSpelledKeys({{other + "d", 0}}), other + "d");
    }
    for (const char* notD : {"\033[100;5u", "\033[100;3u", "\033[27;5;100~", "\033[101u", "x"})
        EXPECT_EQ(playedOnSpelledKeys({{"\033[93;5u" + std::string(notD), 0}}),
                  "\033[93;5u" + std::string(notD));
}

TEST(SpelledDetachKey, WaitsForTheRestOfASequenceButNotForThatOfAnEscape) {
    const std::string spelt = "\033[27;5;93~";
    for (std::size_t cut = 2; cut < spelt.size(); ++cut)
        EXPECT_EQ(
            playedOnSpelledKeys({{spelt.substr(0, cut), 0}, {spelt.substr(cut), 49}, {"d", 9}}),
            "!");
    SpelledDetachKey key;
    EXPECT_EQ(textOf(key.feed(bytesOf("\033"), 0).forward), "\033");
    EXPECT_EQ(key.deadlineMs(), std::nullopt);
    EXPECT_EQ(textOf(key.feed(bytesOf("\033[9"), 5).forward), "");
    EXPECT_EQ(key.deadlineMs(), 55);
    EXPECT_EQ(textOf(key.tick(54)), "");
    EXPECT_EQ(textOf(key.tick(55)), "\033[9");
    key.feed(bytesOf("\x1D"), 60);
    EXPECT_EQ(key.deadlineMs(), 1060);
}

TEST(DetachKey, TellsWhenAWaitingEscapeIsDue) {
    DetachKey key;
    EXPECT_EQ(key.deadlineMs(), std::nullopt);
    key.feed(bytesOf("x\x1D"), 5);
    EXPECT_EQ(key.deadlineMs(), 1005);
    key.tick(1005);
    EXPECT_EQ(key.deadlineMs(), std::nullopt);
}

} // namespace
} // namespace velmo
