#include "core/terminal/FrameHeader.h"

namespace velmo {

std::array<std::uint8_t, FrameHeader::bytes> FrameHeader::of(std::uint8_t type,
                                                             std::size_t length) {
    const auto byte = [&](unsigned shift) { return static_cast<std::uint8_t>(length >> shift); };
    return {type, byte(24), byte(16), byte(8), byte(0)};
}

void appendFrame(Bytes& stream, std::uint8_t type, ByteView payload) {
    const auto header = FrameHeader::of(type, payload.size());
    stream.insert(stream.end(), header.begin(), header.end());
    stream.insert(stream.end(), payload.begin(), payload.end());
}

} // namespace velmo
