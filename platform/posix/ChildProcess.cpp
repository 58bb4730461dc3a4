#include "platform/posix/ChildProcess.h"

#include "core/support/Text.h"
#include "platform/posix/CStrings.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

extern char** environ; // NOLINT(readability-redundant-declaration): not in every <unistd.h>

namespace velmo {

namespace {

/// Bytes of the output that are kept. pmset prints a few hundred; what exceeds this is read and
/// dropped.
constexpr std::size_t maxOutput = 1 << 20;

class FileActions {
public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }

    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }

    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    bool useStreams(const ChildStreams& streams) {
        return posix_spawn_file_actions_adddup2(&actions_, streams.standardInput, STDIN_FILENO) == 0
               && posix_spawn_file_actions_adddup2(&actions_, streams.standardOutput, STDOUT_FILENO)
                      == 0
               && posix_spawn_file_actions_adddup2(&actions_, streams.standardError, STDERR_FILENO)
                      == 0
               && closeOthers();
    }

    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
    // This flag closes every descriptor that is not named by an action.
    static bool closeOthers() { return true; }
#else
    bool closeOthers() {
        return posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1) == 0;
    }
#endif

    posix_spawn_file_actions_t actions_{};
};

class Attributes {
public:
    Attributes() { posix_spawnattr_init(&attributes_); }

    ~Attributes() { posix_spawnattr_destroy(&attributes_); }

    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    bool useDefaults(ChildGroup group) {
        sigset_t all;
        sigset_t none;
        sigfillset(&all);
        sigemptyset(&none);
        int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
        if (group == ChildGroup::own)
            flags |= POSIX_SPAWN_SETPGROUP; // the group defaults to 0: a new one of the child's own
        return posix_spawnattr_setsigdefault(&attributes_, &all) == 0
               && posix_spawnattr_setsigmask(&attributes_, &none) == 0
               && posix_spawnattr_setflags(&attributes_, static_cast<short>(flags)) == 0;
    }

    [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

bool containsNul(std::string_view text) {
    return text.contains('\0');
}

} // namespace

std::optional<pid_t> startChild(const std::string& program,
                                std::span<const std::string_view> arguments,
                                const ChildStreams& streams, ChildGroup group) {
    errno = EINVAL;
    if (containsNul(program) || std::ranges::any_of(arguments, containsNul))
        return std::nullopt;
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const CStrings argv(std::move(words));

    FileActions actions;
    Attributes attributes;
    if (!actions.useStreams(streams) || !attributes.useDefaults(group))
        return std::nullopt;
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, program.c_str(), actions.get(), attributes.get(), argv.get(), environ);
    if (error != 0) {
        errno = error;
        return std::nullopt;
    }
    return child;
}

int shellStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

std::optional<int> waitForChild(pid_t child) {
    int status = 0;
    if (retryInterrupted([&] { return ::waitpid(child, &status, 0); }) != child)
        return std::nullopt;
    return shellStatus(status);
}

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

/// Reads to the end and returns the first `maxOutput` bytes; absent if the end does not come in
/// time.
std::optional<std::string> readUntil(Clock::time_point deadline, int descriptor) {
    std::string output;
    char buffer[4096];
    while (true) {
        pollfd watched{.fd = descriptor, .events = POLLIN, .revents = 0};
        if (retryInterrupted([&] { return ::poll(&watched, 1, millisecondsUntil(deadline)); }) != 1)
            return std::nullopt;
        const ssize_t count =
            retryInterrupted([&] { return ::read(descriptor, buffer, sizeof buffer); });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return output;
        output.append(buffer, std::min(static_cast<std::size_t>(count), maxOutput - output.size()));
    }
}

/// Returns the child's status as a shell tells it; absent if the child does not end in time.
std::optional<int> waitUntil(Clock::time_point deadline, pid_t child) {
    int status = 0;
    pid_t ended = 0;
    while ((ended = ::waitpid(child, &status, WNOHANG)) == 0 && Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return ended == child ? std::optional(shellStatus(status)) : std::nullopt;
}

} // namespace

std::optional<std::string> outputOf(const std::string& program,
                                    std::initializer_list<std::string_view> arguments) {
    return outputOf(program, std::span(arguments.begin(), arguments.size()));
}

std::optional<std::string> outputOf(const std::string& program,
                                    std::span<const std::string_view> arguments,
                                    std::chrono::milliseconds patience) {
    const Descriptor null(retryInterrupted([] { return ::open("/dev/null", O_RDWR | O_CLOEXEC); }));
    auto pipe = makePipe();
    if (!null || !pipe)
        return std::nullopt;
    const auto deadline = Clock::now() + patience;
    const auto child = startChild(program, arguments,
                                  {.standardInput = null.get(),
                                   .standardOutput = pipe->writeEnd.get(),
                                   .standardError = null.get()});
    if (!child)
        return std::nullopt;
    // The output ends only once this process's copy of the write end is closed too. The output is
    // read before the wait, since a child that prints more than fits into a pipe would never end.
    pipe->writeEnd.reset();
    const auto output = readUntil(deadline, pipe->readEnd.get());
    pipe->readEnd.reset();
    const auto status = output ? waitUntil(deadline, *child) : std::nullopt;
    if (!status) {
        ::kill(*child, SIGKILL);
        waitUntil(Clock::now() + killPatience, *child);
        return std::nullopt;
    }
    return status == 0 ? std::optional(Text::repaired(*output)) : std::nullopt;
}

} // namespace velmo
