#pragma once

#include <csignal>

namespace velmo {

/// Tells whether the terminal has sent a signal that this process handles, which the terminal's
/// whole foreground group gets. False for a signal that a process has sent. Only for a handler of
/// the signal, where every call that it makes is safe.
bool isFromTerminal(const siginfo_t& info);

} // namespace velmo
