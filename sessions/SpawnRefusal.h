#pragma once

#include "core/terminal/Pty.h"
#include "sessions/SessionCalls.h"

namespace velmo {

/// Returns what `Pty::parseSpawn` has refused about a request: its words, its folder or its
/// program. Meant only for a request that it has refused.
SessionRefusal refusalOf(Pty::Words words, const Pty::Environment& environment,
                         const Pty::FileSystem& files);

} // namespace velmo
