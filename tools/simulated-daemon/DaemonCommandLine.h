#pragma once

#include "tools/command-line/CommandLine.h"

/// The command line of VelmoPowerDaemonSimulated.
namespace velmo {

extern const CommandLine::Program daemonCommandLine;

} // namespace velmo
