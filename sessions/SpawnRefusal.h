#pragma once

#include "core/terminal/Pty.h"
#include "sessions/SessionCalls.h"

namespace velmo {

/// Tells what of a request was refused that `Pty::parseSpawn` has refused: its words, its folder or
/// its program.
SessionRefusal refusalOf(Pty::Words words, const Pty::Environment& environment,
                         const Pty::FileSystem& files);

} // namespace velmo
