#include "core/terminal/PtyFrame.h"

#include "core/support/BigEndian.h"

#include <algorithm>
#include <utility>

namespace velmo::PtyFrame {

namespace {

constexpr std::size_t numberBytes = 4; ///< payload of resize, exit and ready

bool fits(Kind kind, std::size_t length) {
    switch (kind) {
    case Kind::data:
        return length <= maxPayload;
    case Kind::signal:
        return length == 1;
    case Kind::resize:
    case Kind::exit:
    case Kind::ready:
        break;
    }
    return length == numberBytes;
}

void append(Bytes& stream, Kind kind, ByteView payload) {
    appendFrame(stream, std::to_underlying(kind), payload);
}

Bytes numberFrame(Kind kind, std::uint32_t number) {
    Bytes payload;
    BigEndian::append(payload, number, numberBytes);
    Bytes frame;
    append(frame, kind, payload);
    return frame;
}

bool hasGoodValue(const FrameView& frame) {
    switch (frame.kind) {
    case Kind::resize:
        return frame.size() && validSize(frame.size()->cols, frame.size()->rows);
    case Kind::signal:
        return frame.signal().has_value();
    case Kind::data:
    case Kind::exit:
    case Kind::ready:
        break;
    }
    return true;
}

} // namespace

std::optional<Kind> kindOf(std::uint8_t raw) {
    switch (const auto kind = static_cast<Kind>(raw)) {
    case Kind::data:
    case Kind::resize:
    case Kind::exit:
    case Kind::signal:
    case Kind::ready:
        return kind;
    }
    return std::nullopt;
}

std::optional<Size> FrameView::size() const {
    if (kind != Kind::resize || payload.size() < numberBytes)
        return std::nullopt;
    const auto bytes = payload.first<numberBytes>();
    return Size{.cols = static_cast<int>(BigEndian::read(bytes.first<2>())),
                .rows = static_cast<int>(BigEndian::read(bytes.last<2>()))};
}

std::optional<std::int32_t> FrameView::signal() const {
    if (kind != Kind::signal || payload.empty())
        return std::nullopt;
    const auto* const found = std::ranges::find(signals, payload.front(), &Signal::code);
    return found == signals.end() ? std::nullopt : std::optional(found->number);
}

std::optional<DecodeError> DecoderRules::faultOf(const FrameHeader& header) {
    const auto kind = kindOf(header.type);
    if (!kind)
        return DecodeError::unknownType;
    if (header.length > maxPayload)
        return DecodeError::tooLarge;
    if (!fits(*kind, header.length))
        return DecodeError::badLength;
    return std::nullopt;
}

std::optional<DecodeError> DecoderRules::faultOf(const FrameView& frame) {
    return hasGoodValue(frame) ? std::nullopt : std::optional(DecodeError::badValue);
}

bool validSize(int cols, int rows) {
    return cols >= 1 && cols <= maxCols && rows >= 1 && rows <= maxRows;
}

std::optional<Bytes> encode(Kind kind, ByteView payload) {
    if (!fits(kind, payload.size()))
        return std::nullopt;
    Bytes frame;
    frame.reserve(headerBytes + payload.size());
    append(frame, kind, payload);
    return frame;
}

Bytes data(ByteView bytes) {
    Bytes frames;
    frames.reserve(bytes.size() + (headerBytes * (bytes.size() / maxPayload + 1)));
    do {
        const ByteView piece = bytes.first(std::min(bytes.size(), maxPayload));
        append(frames, Kind::data, piece);
        bytes = bytes.subspan(piece.size());
    } while (!bytes.empty());
    return frames;
}

std::optional<Bytes> resize(std::uint16_t cols, std::uint16_t rows) {
    if (!validSize(cols, rows))
        return std::nullopt;
    return numberFrame(Kind::resize, std::uint32_t{cols} << 16 | rows);
}

Bytes exit(std::int32_t code) {
    return numberFrame(Kind::exit, static_cast<std::uint32_t>(code));
}

Bytes ready(std::uint32_t pid) {
    return numberFrame(Kind::ready, pid);
}

} // namespace velmo::PtyFrame
