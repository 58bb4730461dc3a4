#include "core/terminal/PtyAttach.h"

#include "tests/Texts.h"

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

TEST(PtyAttach, ResetBeginsWithTheCursorAndEndsTheLine) {
    EXPECT_FALSE(reset.contains('\0'));
    EXPECT_TRUE(reset.starts_with("\x1B"
                                  "7\x1B[?1049l\x1B[?25h"));
    EXPECT_TRUE(reset.ends_with("\x1B[<u\x1B[?1l\x1B>\x1B[0m\r\n"));
    EXPECT_EQ(probeReply.size(), 17U);
}

} // namespace
} // namespace velmo
