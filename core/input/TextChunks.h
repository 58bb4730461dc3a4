#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Cuts text to be typed into chunks, each short enough for one keyboard event.
namespace velmo::TextChunks {

inline constexpr std::size_t limit = 20; ///< UTF-16 units in a chunk

/// Returns the chunks. Joined, they are the text with U+FFFD in place of ill-formed UTF-8. A chunk
/// has as many whole user-perceived characters as fit; a character that is longer than the limit
/// has a chunk of its own. An empty text has no chunks.
std::vector<std::string> split(std::string_view text);

} // namespace velmo::TextChunks
