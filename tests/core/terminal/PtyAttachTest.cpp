#include "core/terminal/PtyAttach.h"

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
