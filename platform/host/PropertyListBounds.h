#pragma once

#include <cstddef>
#include <string_view>

/// What a property list that comes from anywhere may demand of the platform's reader. Readers go
/// down into what is nested and copy what is referred to twice: a small file can exhaust stack and
/// memory.
namespace velmo::PropertyListBounds {

inline constexpr std::size_t maxBytes = 1048576;
inline constexpr std::size_t maxContainers = 10000; ///< arrays and dictionaries
inline constexpr std::size_t maxDepth = 128;        ///< of a `Value` made of it

/// What may stand before the XML form.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Whether the bytes look like a property list, in XML in an encoding that ASCII is part of or in
/// the binary form, of no more than `maxBytes` and `maxContainers`, and, in the binary form,
/// without a container that several others refer to and a key that is no text or holds NUL. The
/// text form of old is none. Everything else is the reader's to judge.
bool admits(std::string_view bytes);

} // namespace velmo::PropertyListBounds
