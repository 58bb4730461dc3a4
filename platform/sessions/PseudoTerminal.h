#pragma once

#include "core/terminal/Pty.h"
#include "core/terminal/PtyFrame.h"
#include "core/terminal/SpawnRequest.h"
#include "platform/posix/Descriptor.h"

#include <sys/resource.h>
#include <sys/types.h>

#include <optional>

/// Pseudo-terminals and the programs that run on them.
namespace velmo {

struct StartedProgram {
    Descriptor terminal; ///< the host's side, where the program's output is read
    pid_t process;       ///< leader of a session and a process group of its own
};

/// Starts a program on a new pseudo-terminal, which is its controlling terminal. The program gets
/// default signal dispositions, an empty mask, no descriptor but the standard three, and this limit
/// on open files. A shell, but not tmux, gets "-" and its name as its first word, by which shells
/// know that it is a log-in. Absent if the system refuses any of this, or can't execute the
/// program.
std::optional<StartedProgram> startOnPseudoTerminal(const SpawnRequest& request,
                                                    const Pty::Environment& environment,
                                                    const rlimit& openFiles);

void setWindowSize(int terminal, PtyFrame::Size size);

/// Returns the size of a terminal; absent if the descriptor is not a terminal, or if the columns or
/// rows are unknown (0).
std::optional<PtyFrame::Size> windowSize(int terminal);

/// Sends a signal to the job in the foreground of a terminal, or to the leader's process group if
/// the terminal has no such job.
void signalForegroundJob(int terminal, pid_t leader, int signal);

/// Sends a signal to every process group of the leader's session and to the job in the foreground.
/// Tells whether it found any.
bool signalSession(int terminal, pid_t leader, int signal);

/// Closes every descriptor from this number on. Safe between fork and exec.
void closeDescriptorsFrom(int first);

} // namespace velmo
