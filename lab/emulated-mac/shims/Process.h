#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The process itself: its program, its user, its signals, its end.
namespace velmo {

/// Names the file that the process runs.
void setExecutable(std::string path);

/// Returns the user that the process believes it runs as: EMULATED_UID, else 501, a Mac's first
/// user.
std::uint32_t emulatedUser();

/// Returns the words by which a process was started. In an emulated process's command line these
/// are the words behind the emulator's.
std::vector<std::string> wordsOf(int process);

/// Calls back, on a thread of the system's own, for each signal of this number (Darwin's), whether
/// or not the process ignores it, as a kqueue's EVFILT_SIGNAL does.
void watchSignal(int signal, std::function<void()> handler);

/// From now on notes at every SIGUSR2 what is alive. Only `velmo-power hold` has a use of its own
/// for that signal: it ends.
void watchForLedgerRequests();

/// Ends the process as `exit` does after `main` has returned: what was registered with atexit is
/// called in reverse order, then what is left is noted.
[[noreturn]] void exitAfterMain(int status);

} // namespace velmo
