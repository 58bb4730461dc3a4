#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// Raw bytes, as they come from a pipe, a socket or a pasteboard.
namespace velmo {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Returns the bytes of a text, without a copy. The view lives as long as the text.
inline ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Returns the bytes as a text, without a copy and without any check of the encoding.
inline std::string_view textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace velmo
