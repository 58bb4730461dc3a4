#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Bytes as text in the standard alphabet (A-Z, a-z, 0-9, "+", "/"), padded with "=" to a multiple
/// of four characters, without line breaks.
namespace velmo::Base64 {

std::string encode(ByteView bytes);

/// Strict, so that each sequence of bytes has one spelling: absent for any other character, for
/// missing or misplaced padding, and for left-over bits that are not zero. "" is no bytes.
std::optional<Bytes> decode(std::string_view text);

/// The same for a text that comes in pieces, which may be cut anywhere.
class Decoder {
public:
    /// `characters` is how many will come, to make room for once.
    explicit Decoder(std::size_t characters);

    /// False when the text can't be decoded, whatever else comes.
    [[nodiscard]] bool append(std::string_view piece);

    /// What was decoded; to be called once, after the last piece.
    [[nodiscard]] std::optional<Bytes> finish();

private:
    bool appendWhole(std::string_view characters);

    Bytes bytes_;
    std::string pending_; ///< the last four characters or fewer: only they may hold padding
};

} // namespace velmo::Base64
