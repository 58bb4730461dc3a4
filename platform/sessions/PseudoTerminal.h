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
    Descriptor terminal; ///< the side that shows what the program writes
    pid_t process;       ///< leader of a session and a process group of its own
};

/// Starts a program on a new pseudo-terminal, which is its controlling terminal: with default
/// signal dispositions, an empty mask, no descriptor but the standard three, and this limit on open
/// files. A shell's own name begins with "-", by which shells know that it is a log-in. Absent if
/// the system refuses any of it, that the program can't be executed included.
std::optional<StartedProgram> startOnPseudoTerminal(const SpawnRequest& request,
                                                    const Pty::Environment& environment,
                                                    const rlimit& openFiles);

void setWindowSize(int terminal, PtyFrame::Size size);

/// Returns the size that a terminal tells; absent if it is none, or tells none.
std::optional<PtyFrame::Size> windowSize(int terminal);

/// Sends a signal to the job in the foreground of a terminal; to the leader's if there is none.
void signalForegroundJob(int terminal, pid_t leader, int signal);

/// Sends a signal to every process group of the leader's session, and tells whether there is any.
bool signalSession(int terminal, pid_t leader, int signal);

/// Closes every descriptor from this number on. Safe between fork and exec.
void closeDescriptorsFrom(int first);

} // namespace velmo
