#pragma once

#include "platform/posix/ProcessBirth.h"

#include <sys/types.h>

#include <expected>
#include <optional>
#include <string>
#include <vector>

/// Runs a command on its user's behalf, as `env` and `nice` do: the command starts as if this
/// process did not stand in between, in the same process group and terminal, with the environment,
/// folder, descriptors and signals that this process was started with.
namespace velmo {

/// Starts the program that the first word names, by its path or by PATH if the word has no slash.
/// The program gets the words unchanged, and the descriptor `handedOn` if that is present. Returns
/// the id of a process that the caller must wait for, or the errno that says why the program can't
/// be run. There must be a first word, and no word may contain NUL.
std::expected<pid_t, int> startCommand(const std::vector<std::string>& words,
                                       const ProcessBirth& birth,
                                       std::optional<int> handedOn = std::nullopt);

/// Ends this process by the signal that ended its command, so that the process that waits for this
/// one sees the same end. Leaves no core file. Returns only if the signal does not end a process.
void endBySignal(int signal);

/// Gives the signal its default effect on this process, such as to stop it until it is continued.
void raiseByDefault(int signal);

} // namespace velmo
