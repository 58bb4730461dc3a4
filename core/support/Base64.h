#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Spells bytes in the standard alphabet (A-Z, a-z, 0-9, "+", "/"), padded with "=" to a multiple
/// of four characters, without line breaks.
namespace velmo::Base64 {

std::string encode(ByteView bytes);

/// Decodes strictly, so that each sequence of bytes has one spelling. Absent for any other
/// character, for missing or misplaced padding, and for left-over bits that are not zero. ""
/// decodes to zero bytes.
std::optional<Bytes> decode(std::string_view text);

/// Decodes in the same way a text that comes in pieces, which may be cut anywhere.
class Decoder {
public:
    /// Makes room for a text of so many characters, once.
    explicit Decoder(std::size_t characters);

    /// Takes the next piece; false when the text can't be decoded, whatever else comes.
    [[nodiscard]] bool append(std::string_view piece);

    /// Returns what was decoded. To be called once, after the last piece.
    [[nodiscard]] std::optional<Bytes> finish();

private:
    bool appendWhole(std::string_view characters);

    Bytes bytes_;
    std::string pending_; ///< the last four characters or fewer: only they may be padding
};

} // namespace velmo::Base64
