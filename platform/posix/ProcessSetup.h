#pragma once

#include <cstddef>
#include <vector>

namespace velmo {

/// Prepares the process; `main` calls it first. It makes sure that the standard descriptors are
/// open, so that no file of ours gets their numbers; that a write to a reader who went away does
/// not kill the process (SIGPIPE); and that children can be waited for (SIGCHLD), whatever
/// dispositions and signal mask were inherited.
void prepareProcess();

/// Takes the signal out of the calling thread's mask.
void unblockSignal(int signal);

/// Returns the signals upon which a program that has something to put back ends in good order:
/// SIGTERM, and the terminal's two, SIGINT and SIGHUP, unless this process was started to ignore
/// them, as nohup(1) does. It is asked before any of them is handled.
std::vector<int> endingSignals();

/// Raises the soft limit on open descriptors to this number where the hard limit allows.
void allowDescriptors(std::size_t count);

} // namespace velmo
