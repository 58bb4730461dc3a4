#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Cuts typed text into pieces that one keyboard event can carry.
namespace velmo::TextChunks {

inline constexpr std::size_t limit = 20; ///< UTF-16 units in a chunk

/// As many whole user-perceived characters in each chunk as fit; one that is longer than the limit
/// stands alone. Together the chunks are the text, in which ill-formed UTF-8 becomes U+FFFD.
std::vector<std::string> split(std::string_view text);

} // namespace velmo::TextChunks
