#include "platform/sessions/PseudoTerminal.h"

#include "lab/instruments/TemporaryFolder.h"
#include "lab/instruments/TerminalWindow.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <termios.h>

#include <csignal>
#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;

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
    const TemporaryFolder folder;
    const std::string job = folder.path() / "a job) of (its own"; // as the system tells its name
    std::ofstream(job) << "#!/bin/sh\ntrap 'echo ended-$((2)); exit' TERM; echo job-$((1))\n"
                          "while :; do sleep 0.05; done\n";
    fs::permissions(job, fs::perms::owner_all);
    for (const char* sign : {" &", ""})
        run("'" + job + "'" + sign);
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

TEST(PseudoTerminal, StartsAProgramWithALoginNameAndDefaultSignals) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGHUP);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    static_cast<void>(std::signal(SIGTERM, SIG_IGN));
    rlimit openFiles{};
    ::getrlimit(RLIMIT_NOFILE, &openFiles);
    openFiles.rlim_cur = 77;
    const auto start = [&](const std::vector<std::string>& words) {
        return startOnPseudoTerminal(
            {.cwd = "/usr", .cols = 91, .rows = 17, .program = words.front(), .argv = words},
            {{"PATH", "/usr/bin:/bin"}}, openFiles);
    };
    const auto shell = start({"/bin/sh", "-c", "echo $0; ulimit -n; pwd; stty size"});
    const auto hungUp = start({"/bin/sleep", "5"});
    const auto terminated = start({"/bin/sleep", "5"});
    static_cast<void>(std::signal(SIGTERM, SIG_DFL));
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(shell && hungUp && terminated);
    std::string shown;
    for (char byte = 0; ::read(shell->terminal.get(), &byte, 1) == 1;)
        shown += byte;
    EXPECT_EQ(shown, "-sh\r\n77\r\n/usr\r\n17 91\r\n");
    EXPECT_EQ(waitForChild(shell->process), 0);
    ::kill(hungUp->process, SIGHUP);
    EXPECT_EQ(waitForChild(hungUp->process), 128 + SIGHUP);
    ::kill(terminated->process, SIGTERM);
    EXPECT_EQ(waitForChild(terminated->process), 128 + SIGTERM);
}

TEST(PseudoTerminal, FailsIfTheProgramCannotRun) {
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
