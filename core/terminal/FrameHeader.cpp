#include "core/terminal/FrameHeader.h"

#include <algorithm>
#include <bit>

namespace velmo {

namespace {

/// Appends bytes fast, whatever their number and whether or not the memory has been used before.
/// The C library copies pieces of half a page with wide stores. For longer ones it may choose an
/// instruction that is slow behind a header, where source and target are shifted against each
/// other. The first byte of a page is stored alone: if the page is new, the system steps in at that
/// single store and does not interrupt a copy.
void appendPayload(Bytes& stream, ByteView payload) {
    constexpr std::size_t page = 4096;
    constexpr std::size_t half = page / 2;
    while (!payload.empty()) {
        const auto target = std::bit_cast<std::uintptr_t>(stream.data() + stream.size());
        if (target % page == 0) {
            stream.push_back(payload.front());
            payload = payload.subspan(1);
            continue;
        }
        const ByteView piece = payload.first(std::min(payload.size(), half - target % half));
        stream.insert(stream.end(), piece.begin(), piece.end());
        payload = payload.subspan(piece.size());
    }
}

} // namespace

std::array<std::uint8_t, FrameHeader::bytes> FrameHeader::of(std::uint8_t type,
                                                             std::size_t length) {
    const auto byte = [&](unsigned shift) { return static_cast<std::uint8_t>(length >> shift); };
    return {type, byte(24), byte(16), byte(8), byte(0)};
}

void appendFrame(Bytes& stream, std::uint8_t type, ByteView payload) {
    const auto header = FrameHeader::of(type, payload.size());
    stream.insert(stream.end(), header.begin(), header.end());
    appendPayload(stream, payload);
}

} // namespace velmo
