#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>

/// Numbers as bytes, the most significant byte first: network order.
namespace velmo::BigEndian {

/// Returns the number that all the bytes spell, at most 8; 0 for zero bytes.
constexpr std::uint64_t read(const auto& bytes) {
    std::uint64_t number = 0;
    for (const auto byte : bytes)
        number = number << 8U | static_cast<std::uint8_t>(byte);
    return number;
}

/// Appends the lowest `size` bytes of the number, at most 8.
inline void append(Bytes& bytes, std::uint64_t number, std::size_t size) {
    while (size-- > 0)
        bytes.push_back(static_cast<std::uint8_t>(number >> 8U * size));
}

} // namespace velmo::BigEndian
