#pragma once

#include "core/terminal/Pty.h"
#include "sessions/SessionCalls.h"

namespace velmo {

/// Returns what is wrong with a request that `Pty::parseSpawn` has refused: its words, its folder
/// or its program.
SessionRefusal refusalOf(Pty::Words words, const Pty::Environment& environment,
                         const Pty::FileSystem& files);

} // namespace velmo
