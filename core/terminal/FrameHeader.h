#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace velmo {

/// What stands before every payload on a terminal session's streams: one type byte, then the
/// length of the payload in four bytes, the most significant first.
struct FrameHeader {
    static constexpr std::size_t bytes = 5;

    std::uint8_t type;
    std::uint32_t length; ///< bytes of payload; anything up to 2^32-1 until it was judged

    /// `stream` must hold a whole header.
    static FrameHeader read(ByteView stream);

    void appendTo(Bytes& stream) const;
};

/// Numbers in network order, at the front of bytes that hold at least so many.
std::uint16_t readBigEndian16(ByteView bytes);
std::uint32_t readBigEndian32(ByteView bytes);
void appendBigEndian16(Bytes& bytes, std::uint16_t value);
void appendBigEndian32(Bytes& bytes, std::uint32_t value);

} // namespace velmo
