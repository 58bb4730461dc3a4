#include "platform/posix/StandardStreams.h"

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <string>

namespace velmo {
namespace {

/// Runs the work in a process with a pipe as standard output that never makes a writer wait, and
/// returns the output, read meanwhile or afterwards.
std::string writtenBy(const std::function<void()>& work, bool readsAfterwards) {
    auto pipe = makePipe();
    ::fcntl(pipe->writeEnd.get(), F_SETFL, O_NONBLOCK);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(pipe->writeEnd.get(), STDOUT_FILENO);
        pipe->readEnd.reset();
        work();
        ::_exit(0);
    }
    pipe->writeEnd.reset();
    const auto wait = [&] { EXPECT_EQ(waitForChild(child), 0); };
    if (readsAfterwards)
        wait();
    const auto output = readToEnd(pipe->readEnd.get(), 100'000'000);
    if (!readsAfterwards)
        wait();
    return output.value_or("");
}

const std::string longLine = std::string(4'000'000, 'x') + "\n";

TEST(StandardStreams, WritesALineWholeThoughThePipeIsFull) {
    EXPECT_EQ(writtenBy(
                  [] {
                      writeStandardOutput(longLine);
                      writeStandardOutput("next\n");
                  },
                  false),
              longLine + "next\n");
}

TEST(StandardStreams, DropsOfferedOutputIfThePipeIsFull) {
    const std::string written = writtenBy(
        [] {
            offerStandardOutput(longLine);
            offerStandardOutput("next\n");
        },
        true);
    EXPECT_LT(written.size(), longLine.size());
    EXPECT_FALSE(written.contains("next"));
}

} // namespace
} // namespace velmo
