#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/FrameDecoder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <utility>

/// The framing of one terminal session between the process that owns the pseudo-terminal and the
/// side that shows it. Frames follow each other with nothing between them:
///
///     type byte | length, 4 bytes | payload
///     data    1 | 0...65536       | raw terminal bytes, either way
///     resize  2 | 4               | columns, then rows, 2 bytes each
///     exit    3 | 4               | exit code, signed
///     signal  4 | 1               | a code of `signals`
///     ready   5 | 4               | process id of the child
///
/// All numbers are big-endian: 02 00 00 00 04 00 50 00 18 is a resize to 80 x 24.
namespace velmo::PtyFrame {

inline constexpr std::size_t headerBytes = FrameHeader::bytes;
inline constexpr std::size_t maxPayload = 65536; ///< bytes
inline constexpr int maxCols = 1000;
inline constexpr int maxRows = 500;

enum class Kind : std::uint8_t { data = 1, resize, exit, signal, ready };

/// Returns the kind with this type byte, or nothing for any other byte.
std::optional<Kind> kindOf(std::uint8_t raw);

struct Signal {
    std::uint8_t code;   ///< on the wire
    std::int32_t number; ///< to deliver
};

/// The signals that can be carried: hang-up, interrupt and terminate.
inline constexpr auto signals = std::to_array<Signal>(
    {{.code = 1, .number = 1}, {.code = 2, .number = 2}, {.code = 15, .number = 15}});

struct Size {
    int cols;
    int rows;

    bool operator==(const Size&) const = default;
};

/// A frame that refers to its payload, which lies elsewhere.
struct FrameView {
    Kind kind = Kind::data;
    ByteView payload;

    /// Returns the size that a resize frame carries; absent for a frame of another kind, and if the
    /// payload is too short.
    [[nodiscard]] std::optional<Size> size() const;

    /// Returns the number of the signal to deliver; absent for a frame of another kind, and for a
    /// code that is not in `signals`.
    [[nodiscard]] std::optional<std::int32_t> signal() const;
};

struct Frame {
    Kind kind = Kind::data;
    Bytes payload;

    [[nodiscard]] FrameView view() const { return {.kind = kind, .payload = payload}; }

    // Return what the view's functions return.
    [[nodiscard]] std::optional<Size> size() const { return view().size(); }

    [[nodiscard]] std::optional<std::int32_t> signal() const { return view().signal(); }

    bool operator==(const Frame&) const = default;
};

/// What is wrong with a frame. If a frame has several faults, the first in this order is reported.
/// The first three are found as soon as the header is there, `badValue` once the payload is whole.
enum class DecodeError { unknownType, tooLarge, badLength, badValue };

struct DecoderRules {
    using Frame = PtyFrame::Frame;
    using FrameView = PtyFrame::FrameView;
    using Error = DecodeError;

    static bool isSoundData(const FrameHeader& header) {
        return header.type == std::to_underlying(Kind::data) && header.length <= maxPayload;
    }

    static std::optional<Error> faultOf(const FrameHeader& header);
    static std::optional<Error> faultOf(const FrameView& frame);

    static FrameView view(std::uint8_t type, ByteView payload) {
        return {.kind = static_cast<Kind>(type), .payload = payload};
    }

    static std::expected<Frame, Error> frame(const FrameView& view, Bytes payload) {
        if (const auto fault = faultOf(view))
            return std::unexpected(*fault);
        return Frame{.kind = view.kind, .payload = std::move(payload)};
    }
};

using Decoder = FrameDecoder<DecoderRules>;

/// Tells whether a terminal may have this size: 1...1000 columns and 1...500 rows.
bool validSize(int cols, int rows);

/// Returns the frame's bytes, or nothing if the payload's length is not one of its kind. Values are
/// not judged: a resize to 0 x 0 is framed here and refused by the other side's decoder.
std::optional<Bytes> encode(Kind kind, ByteView payload);

/// Returns the bytes in as many data frames as needed, each as long as possible; for no bytes, one
/// empty frame.
Bytes data(ByteView bytes);

/// Returns a resize frame, or nothing if the size is not valid.
std::optional<Bytes> resize(std::uint16_t cols, std::uint16_t rows);

// Return an exit frame and a ready frame.
Bytes exit(std::int32_t code);
Bytes ready(std::uint32_t pid);

} // namespace velmo::PtyFrame
