#include "core/terminal/PtyAttach.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmo {
namespace {

using namespace PtyAttach;

TEST(PtyAttach, ReadsItsArguments) {
    struct Case {
        std::vector<std::string> args;
        std::optional<Arguments> expected;
    };

    const Case cases[] = {
        {{"--probe"}, ProbeArguments{}},
        {{"--ticket-file", "/a/b"}, TicketArguments{"/a/b"}},
        {{"--ticket-file", "/a/b/"}, TicketArguments{"/a/b/"}}, // refused when it is read
        {{"--ticket-file", "a/b"}, {}},
        {{"--ticket-file", "/a/../b"}, {}},
        {{"--ticket-file"}, {}},
        {{"--ticket-file", "/a", "--probe"}, {}},
        {{"--probe", ""}, {}},
        {{"--ticket-file=/a"}, {}},
        {{}, {}},
    };
    for (const auto& [args, expected] : cases)
        EXPECT_EQ(parseArguments(args), expected) << testing::PrintToString(args);
}

TEST(PtyAttach, ResetBeginsWithTheCursorAndEndsTheLine) {
    EXPECT_EQ(reset.find('\0'), std::string_view::npos);
    EXPECT_TRUE(reset.starts_with("\x1B"
                                  "7\x1B[?1049l\x1B[?25h"));
    EXPECT_TRUE(reset.ends_with("\x1B[<u\x1B[?1l\x1B>\x1B[0m\r\n"));
    EXPECT_EQ(probeReply.size(), 17U);
}

} // namespace
} // namespace velmo
