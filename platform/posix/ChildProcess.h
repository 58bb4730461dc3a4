#pragma once

#include <sys/types.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Child processes. They are born with default signal dispositions, an empty signal mask and no
/// descriptor but the standard three, whatever this process ignores, blocks or has open.
namespace velmo {

/// Runs a program by its absolute path, without a shell, standard input and error on the null
/// device. Its standard output, ill-formed UTF-8 repaired, once it has ended with status 0; absent
/// when it could not be started, ended otherwise, or an argument holds NUL.
std::optional<std::string> outputOf(const std::string& program,
                                    std::span<const std::string_view> arguments);

struct ChildStreams {
    int standardInput;
    int standardOutput;
    int standardError;
};

/// The process group that a child is born into.
enum class ChildGroup {
    ofParent,
    own, ///< with the child's process id for its number, so that a signal can reach all in it
};

/// Starts a program: by its path, or found in PATH when it has no slash. Absent on failure, with
/// errno set. The caller waits for it.
std::optional<pid_t> startChild(const std::string& program,
                                std::span<const std::string_view> arguments,
                                const ChildStreams& streams,
                                ChildGroup group = ChildGroup::ofParent);

/// The status of an ended child as a shell tells it: its own, or 128 and the signal. Absent when
/// there is no such child. Waits for its end.
std::optional<int> waitForChild(pid_t child);

/// The same for a status from `waitpid`.
int shellStatus(int waitStatus);

} // namespace velmo
