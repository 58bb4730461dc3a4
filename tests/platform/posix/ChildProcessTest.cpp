#include "platform/posix/ChildProcess.h"

#include "lab/instruments/TemporaryFolder.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessArguments.h"
#include "platform/posix/ProgramName.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <tuple>
#include <vector>

namespace velmo {
namespace {

std::optional<std::string> shell(std::string_view script,
                                 std::chrono::milliseconds patience = outputPatience) {
    const std::vector<std::string_view> arguments{"-c", script};
    return outputOf("/bin/sh", arguments, patience);
}

TEST(ChildProcess, ReturnsTheOutputOfWhatSucceeded) {
    const std::pair<std::string_view, std::optional<std::string>> cases[] = {
        {"printf 'a\\nb'", "a\nb"},
        {"echo out; echo err >&2", "out\n"},
        {"printf 'a\\377b'", "a\uFFFDb"},
        {"cat", ""}, // standard input is the null device
        {"head -c 200000 /dev/zero | tr '\\0' x",
         std::string(200000, 'x')}, // no pipe has that room
        {"head -c 2000000 /dev/zero | tr '\\0' x", std::string(1048576, 'x')},
        {"echo out; exit 1", {}},
        {"echo out; kill -9 $$", {}},
    };
    for (const auto& [script, output] : cases)
        EXPECT_EQ(shell(script), output) << script;
    EXPECT_FALSE(outputOf("/nonexistent/pmset", {}));
    EXPECT_FALSE(shell(std::string_view("echo\0x", 6)));
}

TEST(ChildProcess, WhatTakesTooLongIsKilledAndHasFailed) {
    // The second closes its output first; a program that the third has started keeps the output
    // open.
    for (const char* const script :
         {"exec sleep 1000", "exec >&-; exec sleep 1000", "sleep 3 & echo out"})
        EXPECT_FALSE(shell(script, std::chrono::milliseconds(100))) << script;
}

TEST(ChildProcess, InheritsNoSignalStateAndNoDescriptors) {
    const auto previous = std::signal(SIGTERM, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    const Descriptor leaky(::fcntl(STDERR_FILENO, F_DUPFD, 9)); // not close-on-exec

    EXPECT_EQ(shell("kill -TERM $$; echo survived"), std::nullopt);
    EXPECT_EQ(shell("kill -INT $$; echo survived"), std::nullopt);
    EXPECT_EQ(shell("( : >&" + std::to_string(leaky.get()) + " ) 2>/dev/null || echo closed"),
              "closed\n");

    sigprocmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGTERM, previous);
}

TEST(ProgramName, IsThatOfTheFileEvenWhenItIsGone) {
    const TemporaryFolder folder;
    const auto copy = folder.path() / "a program";
    std::filesystem::copy_file("/bin/cat", copy);
    const auto pipe = makePipe();
    const auto child = startChild(copy.string(), {}, {pipe->readEnd.get(), 1, 2});
    ASSERT_TRUE(child);
    EXPECT_EQ(programNameOf(*child), "a program");
    std::filesystem::remove(copy); // upon which not every system tells
    EXPECT_EQ(programNameOf(*child).value_or("a program"), "a program");
    ::kill(*child, SIGKILL);
    waitForChild(*child);
    EXPECT_EQ(programNameOf(*child), std::nullopt);
}

TEST(ProcessArguments, ReadsWhatAMacsKernelGives) {
    using Words = std::optional<std::vector<std::string>>;
    const auto bytes = [](int count, std::string_view rest) {
        return std::string(reinterpret_cast<const char*>(&count), sizeof count) + std::string(rest);
    };
    using namespace std::string_view_literals;
    for (const auto& [count, rest, words] : {
             std::tuple(2, "/bin/a\0\0\0a\0b\0HOME=/\0"sv, Words{{"a", "b"}}),
             std::tuple(2, "/bin/a\0a\0\0HOME=/\0"sv, Words{{"a", ""}}),
             std::tuple(0, "/bin/a\0"sv, Words{std::in_place}),
             std::tuple(-1, "/bin/a\0a\0"sv, Words{std::in_place}),
             std::tuple(2, "/bin/a\0a\0"sv, Words{}),
             std::tuple(1, "/bin/a\0a"sv, Words{}),
             std::tuple(INT_MAX, "/bin/a\0a\0"sv, Words{}),
             std::tuple(1, "/bin/a"sv, Words{}),
         })
        EXPECT_EQ(parseProcessArguments(bytes(count, rest)), words) << count << rest;
    EXPECT_EQ(parseProcessArguments("abc"), std::nullopt);
}

TEST(ProcessArguments, AreThoseOfAProcessOfThisUser) {
    const auto own = argumentsOf(::getpid());
    ASSERT_TRUE(own && !own->empty());
    EXPECT_TRUE(own->front().ends_with("platform_tests")) << own->front();
    EXPECT_FALSE(argumentsOf(INT_MAX));
}

TEST(ProcessArguments, AreNotThoseOfAnotherUsersProcess) {
    if (::getuid() != 0) {
        EXPECT_FALSE(argumentsOf(1));
        return;
    }
    auto running = makePipe();
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t somebodyElse = 12345;
        if (::setuid(somebodyElse) == 0)
            ::execl("/bin/sleep", "sleep", "1000", nullptr);
        ::_exit(1);
    }
    running->writeEnd.reset();
    char none = 0;
    EXPECT_EQ(::read(running->readEnd.get(), &none, 1), 0); // closed as the program starts
    EXPECT_TRUE(programNameOf(child));
    EXPECT_FALSE(argumentsOf(child));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

} // namespace
} // namespace velmo
