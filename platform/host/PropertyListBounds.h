#pragma once

#include <cstddef>
#include <string_view>

/// Limits what a property list that comes from anywhere may demand of the platform's reader.
/// Readers recurse into what is nested and copy what is referred to twice, so that a small file can
/// exhaust stack and memory.
namespace velmo::PropertyListBounds {

inline constexpr std::size_t maxBytes = 1048576;
inline constexpr std::size_t maxContainers = 10000; ///< arrays and dictionaries
inline constexpr std::size_t maxDepth = 128;        ///< of a `Value` made of it

/// Bytes that may stand before the XML form.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Tells whether the bytes look like a property list that is safe to read: within `maxBytes` and
/// `maxContainers`, and either in XML, in an encoding that ASCII is part of, or in the binary form.
/// In the binary form no container with content may be referred to twice, and every key must be a
/// text without NUL. The old text form is refused. All other damage is for the reader to find.
bool admits(std::string_view bytes);

} // namespace velmo::PropertyListBounds
