#pragma once

#include "lab/emulated-mac/loader/MachOFile.h"

namespace velmo {

/// Makes the executable's thread-local variables work: every descriptor in "__thread_vars" is a
/// function, a key and an offset (<mach-o/loader.h>, dyld's threadLocalVariables.c). Compiled code
/// calls the function with the descriptor, and relies on every register but the result's to keep
/// its value.
void useThreadLocals(const MachOFile& file);

} // namespace velmo
