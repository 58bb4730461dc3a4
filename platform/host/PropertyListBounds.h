#pragma once

#include <cstddef>
#include <string_view>

/// Limits what a property list that comes from anywhere may demand of the platform's reader.
/// Readers recurse into what is nested and copy what is referred to twice, so that a small file can
/// exhaust stack, time and memory. A list is therefore measured unfolded: everything counts as
/// often as it is referred to. A list within these limits is read in some ten milliseconds and 16
/// MiB.
namespace velmo::PropertyListBounds {

inline constexpr std::size_t maxBytes = 1048576;              ///< of the file
inline constexpr std::size_t maxUnfoldedBytes = 4 * maxBytes; ///< of texts, as UTF-8, and data
inline constexpr std::size_t maxNodes = 32768; ///< values and keys, or elements of XML
inline constexpr std::size_t maxDepth = 128;   ///< the root's is 0

/// Bytes of XML that a reader may move: for each entity ("&amp;") some move the text behind it.
inline constexpr std::size_t maxMovedBytes = 256 * maxBytes;

/// Bytes that may stand before the XML form.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Tells whether the bytes look like a property list that is safe to read: within all limits, and
/// either in XML or in the binary form. The old text form is refused.
///
/// In the binary form anything may be referred to twice, but nothing may contain itself, and every
/// key must be a text without NUL.
///
/// XML must be in an encoding in which every '<' is one. An XML declaration may name UTF-8, ASCII,
/// ISO 8859, Windows 125x or Macintosh. Readers must agree where a tag ends: a '<' in a tag, quotes
/// of two kinds, and declarations within a document type are refused. All other damage is for the
/// reader to find.
bool admits(std::string_view bytes);

} // namespace velmo::PropertyListBounds
