#pragma once

#include "core/support/Bytes.h"

namespace velmo {

/// Returns the SHA-256 of the bytes, by the system's own library.
Bytes sha256(ByteView bytes);

} // namespace velmo
