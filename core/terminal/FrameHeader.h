#pragma once

#include "core/support/BigEndian.h"
#include "core/support/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace velmo {

/// The header of every frame on a terminal session's streams: one type byte, then the length of the
/// payload in four bytes, the most significant first.
struct FrameHeader {
    static constexpr std::size_t lengthBytes = 4;
    static constexpr std::size_t bytes = 1 + lengthBytes;

    std::uint8_t type;
    std::uint32_t length; ///< bytes of payload, up to 2^32-1 until a decoder has judged it

    /// Reads the header that the stream begins with. The stream must contain all of it.
    static constexpr FrameHeader read(ByteView stream) {
        const auto number = BigEndian::read(stream.subspan<1, lengthBytes>());
        return {.type = stream[0], .length = static_cast<std::uint32_t>(number)};
    }

    /// Returns the bytes of a header for a payload of this length, which must fit in four bytes.
    static std::array<std::uint8_t, bytes> of(std::uint8_t type, std::size_t length);
};

/// Appends a header and the payload. The payload's length must fit in four bytes, and the caller
/// reserves the room for a large one.
void appendFrame(Bytes& stream, std::uint8_t type, ByteView payload);

} // namespace velmo
