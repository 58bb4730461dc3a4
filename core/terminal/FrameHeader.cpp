#include "core/terminal/FrameHeader.h"

namespace velmo {

void appendFrame(Bytes& stream, std::uint8_t type, ByteView payload) {
    stream.push_back(type);
    BigEndian::append(stream, payload.size(), FrameHeader::lengthBytes);
    stream.insert(stream.end(), payload.begin(), payload.end());
}

} // namespace velmo
