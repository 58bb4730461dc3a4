#pragma once

#include <cstdint>

/// The Mac's basic types, which other systems lack.
using Boolean = unsigned char;
using UInt8 = std::uint8_t;
using OSStatus = std::int32_t;
