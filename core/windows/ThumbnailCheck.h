#pragma once

#include "core/support/Bytes.h"

#include <cstdint>

/// Whether a capture shows nothing: the system hands out empty pictures of windows that it did not
/// draw. Captures are large, so that only a grid of about 128 by 128 samples (fewer than 256 by
/// 256) is looked at; a sample whose alpha is 0 counts for nothing.
namespace velmo::ThumbnailCheck {

/// Four bytes a pixel, the fourth of them alpha; rows from the top. All lengths may be anything:
/// a capture of no size, or with fewer bytes than its rows need, is not called blank. The last row
/// needs no padding.
struct Capture {
    ByteView bytes;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t bytesPerRow = 0;
};

/// Whether all samples have the colour of the first one, give or take 3 in each channel.
bool isBlank(const Capture& capture);

/// How many rows of the capture a title bar of 40 points covers, at most a quarter of them.
/// `frameHeight` is the window's, in points; 0 rows when it is not above 0.
std::int64_t titleRows(std::int64_t height, double frameHeight);

/// The same as `isBlank` below the title bar; but what is dark throughout is blank too: a body
/// where no sample has a luminance of 56 or more (of 255). The brightest sample decides, not the
/// mean: a dark terminal with a line of text in it is not blank. Never blank: fewer than 0 rows of
/// title, or no row below them.
bool isBlankBody(const Capture& capture, std::int64_t titleRows);

} // namespace velmo::ThumbnailCheck
