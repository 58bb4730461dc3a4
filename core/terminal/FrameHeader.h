#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace velmo {

/// The header of every frame on a terminal session's streams: one type byte, then the length of the
/// payload in four bytes, the most significant first.
struct FrameHeader {
    static constexpr std::size_t bytes = 5;

    std::uint8_t type;
    std::uint32_t length; ///< bytes of payload, up to 2^32-1 until a decoder has judged it

    /// Reads the header that the stream begins with. The stream must contain all of it.
    static FrameHeader read(ByteView stream);
};

/// Appends a header and its payload, whose length must fit in four bytes.
void appendFrame(Bytes& stream, std::uint8_t type, ByteView payload);

} // namespace velmo
