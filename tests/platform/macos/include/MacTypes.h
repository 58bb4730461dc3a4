#pragma once

#include <cstdint>

/// The Mac's basic types, which every other system lacks.
using Boolean = unsigned char;
using UInt8 = std::uint8_t;
using OSStatus = std::int32_t;
