#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <functional>
#include <optional>

/// Encodes pictures of 8 bits a sample: red, green, blue and alpha, not premultiplied.
namespace velmo::RgbaPng {

/// Returns a row of the picture, counted from the top: 4 bytes per pixel, or no bytes if the row is
/// fully transparent. The bytes must live until the next row is asked for.
using Row = std::function<ByteView(std::size_t y)>;

/// Returns a PNG file in the sRGB colour space, without a time or the name of an author in it. The
/// encoding is tuned for speed with drawings that are mostly transparent. Absent if memory runs
/// out.
std::optional<Bytes> encode(std::size_t width, std::size_t height, const Row& row);

} // namespace velmo::RgbaPng
