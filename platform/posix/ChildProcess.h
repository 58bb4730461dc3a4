#pragma once

#include <sys/types.h>

#include <chrono>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Starts child processes and waits for them. A child starts with default signal dispositions, an
/// empty signal mask and no descriptor but the standard three, whatever this process ignores,
/// blocks or has open.
namespace velmo {

/// How long `outputOf` lets a program run. After that the program is killed, and `outputOf` waits
/// at most `killPatience` for its end.
inline constexpr std::chrono::milliseconds outputPatience(10'000);
inline constexpr std::chrono::milliseconds killPatience(1'000);

/// Runs a program by its absolute path and waits for its end. The program runs without a shell, in
/// this process's own group, with standard input and error on the null device. Returns the first
/// MiB of its standard output, with ill-formed UTF-8 repaired. Absent if the program can't be
/// started, is not done in time or ends in any way but with status 0, and if an argument contains
/// NUL.
std::optional<std::string> outputOf(const std::string& program,
                                    std::span<const std::string_view> arguments,
                                    std::chrono::milliseconds patience = outputPatience);

/// Does the same with the arguments listed in the call.
std::optional<std::string> outputOf(const std::string& program,
                                    std::initializer_list<std::string_view> arguments);

struct ChildStreams {
    int standardInput;
    int standardOutput;
    int standardError;
};

/// The process group that a child starts in.
enum class ChildGroup {
    ofParent,
    own, ///< a new one, numbered by the child's process id, so that a signal can reach all in it
};

/// Starts a program by its path, or looks it up in PATH if the name has no slash. Returns the id of
/// a child that the caller must wait for; absent on failure, with errno set.
std::optional<pid_t> startChild(const std::string& program,
                                std::span<const std::string_view> arguments,
                                const ChildStreams& streams,
                                ChildGroup group = ChildGroup::ofParent);

/// Waits for the end of a child. Returns its status as a shell tells it: the child's own, or 128
/// plus the number of the signal that killed it. Absent if this process has no such child.
std::optional<int> waitForChild(pid_t child);

/// Returns the same for a status from `waitpid`.
int shellStatus(int waitStatus);

} // namespace velmo
