#pragma once

#include <cstdint>
#include <span>

namespace velmo {

/// Fills the span with bytes that nobody can guess, from the system. Ends the process if the system
/// has none.
void fillWithRandomBytes(std::span<std::uint8_t> bytes);

} // namespace velmo
