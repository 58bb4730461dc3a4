#pragma once

#include "platform/posix/ProcessBirth.h"

#include <sys/types.h>

#include <expected>
#include <optional>
#include <string>
#include <vector>

/// Runs a program on its user's behalf, as `env` and `nice` do: it is born as if this process did
/// not stand in between, in the same process group and terminal, with the environment, folder,
/// descriptors and signals that this process was born with.
namespace velmo {

/// Starts the program that the first word names, by its path or by PATH if it has no slash, with
/// the words as they are. Returns its process id, for which the caller must wait, or the errno that
/// says why it can't be run. There must be a first word, and no word may contain NUL. The program
/// also gets the descriptor `handedOn`, if there is one.
std::expected<pid_t, int> startCommand(const std::vector<std::string>& words,
                                       const ProcessBirth& birth,
                                       std::optional<int> handedOn = std::nullopt);

/// Ends this process by the signal that ended its command, so that whoever waits for it sees the
/// same end, but leaves no core file of its own. Returns where the signal does not end a process.
void endBySignal(int signal);

/// Lets the signal have its default effect on this process, such as stopping it until it is
/// continued.
void raiseByDefault(int signal);

} // namespace velmo
