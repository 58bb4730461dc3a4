#pragma once

#include <cstddef>
#include <vector>

namespace velmo {

/// Prepares the process, whatever dispositions, signal mask and descriptors it has inherited;
/// `main` calls this first. Opens the standard descriptors that are closed, so that a file of ours
/// does not get their numbers. Ignores SIGPIPE, so that a write to a lost reader does not kill the
/// process, gives SIGCHLD its default and unblocks it, so that children can be waited for.
void prepareProcess();

/// Takes the signal out of the calling thread's mask.
void unblockSignal(int signal);

/// Returns the signals upon which a program that has something to put back ends in good order:
/// SIGTERM, and the terminal's two, SIGINT and SIGHUP, unless this process was started to ignore
/// them, as nohup(1) does. Call this before any of them gets a handler.
std::vector<int> endingSignals();

/// Raises the soft limit on open descriptors to this number, or to the hard limit if that is lower.
void allowDescriptors(std::size_t count);

} // namespace velmo
