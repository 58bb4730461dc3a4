#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <functional>
#include <optional>

/// Encodes pictures of 8 bits a sample: red, green, blue and alpha, not premultiplied.
namespace velmo::RgbaPng {

/// A row of the picture from the top, 4 bytes a pixel, or nothing for one that is fully
/// transparent. The bytes need only live until the next row is asked for.
using Row = std::function<ByteView(std::size_t y)>;

/// A PNG file in the sRGB colour space, with nothing in it that tells when or by whom it was made.
/// Made to be quick for drawings that are mostly transparent. Absent when memory runs out.
std::optional<Bytes> encode(std::size_t width, std::size_t height, const Row& row);

} // namespace velmo::RgbaPng
