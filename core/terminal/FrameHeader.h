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

} // namespace velmo
