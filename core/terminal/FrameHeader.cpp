#include "core/terminal/FrameHeader.h"

#include "core/support/BigEndian.h"

namespace velmo {

namespace {

constexpr std::size_t lengthBytes = 4;

} // namespace

FrameHeader FrameHeader::read(ByteView stream) {
    return {.type = stream[0],
            .length = static_cast<std::uint32_t>(BigEndian::read(stream.subspan(1, lengthBytes)))};
}

void appendFrame(Bytes& stream, std::uint8_t type, ByteView payload) {
    stream.push_back(type);
    BigEndian::append(stream, payload.size(), lengthBytes);
    stream.insert(stream.end(), payload.begin(), payload.end());
}

} // namespace velmo
