#include "platform/sessions/PseudoTerminal.h"

#include "lab/instruments/TerminalWindow.h"
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <termios.h>

namespace velmo {
namespace {

/// A shell at a pseudo-terminal, with its prompt shown.
class PseudoTerminalTest : public testing::Test {
protected:
    PseudoTerminalTest() {
        run("PS1='rea''dy> '");
        EXPECT_TRUE(shell_.shows("ready> "));
    }

    void run(const std::string& line) { shell_.type(line + "\r"); }

    TerminalWindow shell_{{"/bin/sh"}, {{"PATH", "/usr/bin:/bin"}}};
};

TEST_F(PseudoTerminalTest, ABackspaceTakesAWholeCharacterAway) {
    termios modes{};
    ASSERT_EQ(::tcgetattr(shell_.get(), &modes), 0);
    EXPECT_NE(modes.c_iflag & IUTF8, 0U);
}

TEST_F(PseudoTerminalTest, ASignalReachesTheJobInTheForeground) {
    run("sh -c 'echo job-$((1)); exec sleep 1000'");
    ASSERT_TRUE(shell_.shows("\njob-1"));
    signalForegroundJob(shell_.get(), shell_.process(), SIGINT);
    EXPECT_TRUE(shell_.shows("ready> "));
    run("echo status-$?");
    EXPECT_TRUE(shell_.shows("\nstatus-130"));
}

TEST_F(PseudoTerminalTest, ASignalReachesEveryJobOfTheSession) {
    for (const char* sign : {"&", ""})
        run(std::string("sh -c 'trap \"echo ended-\\$((2)); exit\" TERM; echo job-$((1)); "
                        "while :; do sleep 0.05; done' ")
            + sign);
    ASSERT_TRUE(shell_.shows("job-1"));
    ASSERT_TRUE(shell_.shows("job-1"));
    EXPECT_TRUE(signalSession(shell_.get(), shell_.process(), 0)) << "only asked";
    EXPECT_TRUE(signalSession(shell_.get(), shell_.process(), SIGTERM)); // which the shell ignores
    EXPECT_TRUE(shell_.shows("ended-2"));
    EXPECT_TRUE(shell_.shows("ended-2"));
    EXPECT_FALSE(signalSession(-1, -1, 0)) << "nothing is left";
}

TEST_F(PseudoTerminalTest, TellsItsSizeIfThereIsOne) {
    EXPECT_EQ(windowSize(shell_.get()), (PtyFrame::Size{80, 24}));
    shell_.resize({132, 40});
    run("stty size");
    EXPECT_TRUE(shell_.shows("40 132"));
    for (const PtyFrame::Size none : {PtyFrame::Size{0, 24}, {80, 0}}) {
        shell_.resize(none);
        EXPECT_FALSE(windowSize(shell_.get()));
    }
    EXPECT_FALSE(windowSize(-1));
}

TEST(PseudoTerminal, AProgramThatCantBeRunIsNoSession) {
    rlimit openFiles{};
    ::getrlimit(RLIMIT_NOFILE, &openFiles);
    for (const auto& [folder, program] :
         {std::pair("/", "/nonexistent"), {"/nonexistent", "/bin/sh"}})
        EXPECT_FALSE(startOnPseudoTerminal(
            {.cwd = folder, .cols = 80, .rows = 24, .program = program, .argv = {program}}, {},
            openFiles))
            << program;
    EXPECT_TRUE(startOnPseudoTerminal(
        {.cwd = "/", .cols = 80, .rows = 24, .program = "/bin/true", .argv = {"true"}}, {},
        openFiles));
    EXPECT_EQ(::waitpid(-1, nullptr, 0) > 0, true);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "those that failed are waited for";
}

} // namespace
} // namespace velmo
