#pragma once

#include "core/support/Bytes.h"

#include <cstdint>

/// Recognises captures that show nothing: the system returns empty pictures of windows that it has
/// not drawn. Captures are large, so that only a grid of samples is examined, at most 255 in each
/// direction. Samples with an alpha of 0 are skipped.
namespace velmo::ThumbnailCheck {

/// A picture with the top row first and four bytes per pixel, the fourth being alpha. Any numbers
/// are safe: a capture without pixels, or with fewer bytes than its rows need, is not blank. The
/// last row needs no padding.
struct Capture {
    ByteView bytes;
    std::int64_t width = 0;       ///< pixels
    std::int64_t height = 0;      ///< pixels
    std::int64_t bytesPerRow = 0; ///< with padding
};

/// Tells whether no sample differs from the first one by more than 3 in any channel of its colour.
bool isBlank(const Capture& capture);

/// Returns how many of the `height` rows of a capture a title bar of 40 points covers: at most a
/// quarter of them, and 0 if `frameHeight`, the window's height in points, is not above 0.
std::int64_t titleRows(std::int64_t height, double frameHeight);

/// Tells whether the part below the first `titleRows` rows is blank: either of one colour, as for
/// `isBlank`, or with every sample darker than a luminance of 56 (of 255). The brightest sample
/// decides, not the mean, so that a dark terminal with a line of text in it is not blank. Returns
/// false if `titleRows` is negative or leaves no row.
bool isBlankBody(const Capture& capture, std::int64_t titleRows);

} // namespace velmo::ThumbnailCheck
