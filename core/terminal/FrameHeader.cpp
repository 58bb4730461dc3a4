#include "core/terminal/FrameHeader.h"

namespace velmo {

FrameHeader FrameHeader::read(ByteView stream) {
    return {.type = stream[0], .length = readBigEndian32(stream.subspan(1))};
}

void FrameHeader::appendTo(Bytes& stream) const {
    stream.push_back(type);
    appendBigEndian32(stream, length);
}

std::uint16_t readBigEndian16(ByteView bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint32_t readBigEndian32(ByteView bytes) {
    return std::uint32_t{readBigEndian16(bytes)} << 16 | readBigEndian16(bytes.subspan(2));
}

void appendBigEndian16(Bytes& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void appendBigEndian32(Bytes& bytes, std::uint32_t value) {
    appendBigEndian16(bytes, static_cast<std::uint16_t>(value >> 16));
    appendBigEndian16(bytes, static_cast<std::uint16_t>(value));
}

} // namespace velmo
