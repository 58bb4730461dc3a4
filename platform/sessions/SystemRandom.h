#pragma once

#include <cstdint>
#include <span>

namespace velmo {

/// Fills the span with unguessable bytes from the system. Ends the process if the system can't give
/// them.
void fillWithRandomBytes(std::span<std::uint8_t> bytes);

} // namespace velmo
