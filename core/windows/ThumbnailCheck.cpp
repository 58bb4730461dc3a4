#include "core/windows/ThumbnailCheck.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <span>

namespace velmo::ThumbnailCheck {

namespace {

constexpr std::int64_t bytesPerPixel = 4;
constexpr std::int64_t samplesPerSide = 128;
constexpr int maxDifference = 3;         ///< between channels of the same colour
constexpr int minLuminance = 56;         ///< of a sample that is not dark, 0...255
constexpr double titleBarHeight = 40;    ///< points
constexpr std::int64_t maxTitlePart = 4; ///< a title bar is at most a fourth of a capture

using Pixel = std::span<const std::uint8_t, bytesPerPixel>;

/// Tells whether the bytes are enough for all the pixels. The numbers are divided, because their
/// products may lie beyond 64 bits.
bool containsItsPixels(const Capture& capture) {
    if (capture.width < 1 || capture.height < 1
        || capture.bytesPerRow / bytesPerPixel < capture.width)
        return false;
    const auto rest =
        static_cast<std::int64_t>(capture.bytes.size()) - (capture.width * bytesPerPixel);
    return rest >= 0 && rest / capture.bytesPerRow >= capture.height - 1;
}

std::int64_t stepFor(std::int64_t length) {
    return std::max(length, samplesPerSide) / samplesPerSide;
}

/// Tells whether every opaque sample from `firstRow` down passes the test.
template<class Test>
bool allSamples(const Capture& capture, std::int64_t firstRow, const Test& test) {
    const std::int64_t columnStep = stepFor(capture.width);
    const std::int64_t rowStep = stepFor(capture.height - firstRow);
    for (std::int64_t row = firstRow; row < capture.height; row += rowStep) {
        for (std::int64_t column = 0; column < capture.width; column += columnStep) {
            const auto offset =
                static_cast<std::size_t>((row * capture.bytesPerRow) + (column * bytesPerPixel));
            const Pixel pixel(capture.bytes.subspan(offset).first<bytesPerPixel>());
            if (pixel[3] != 0 && !test(pixel))
                return false;
        }
    }
    return true;
}

bool haveSameColour(Pixel a, Pixel b) {
    return std::abs(a[0] - b[0]) <= maxDifference && std::abs(a[1] - b[1]) <= maxDifference
           && std::abs(a[2] - b[2]) <= maxDifference;
}

bool isUniform(const Capture& capture, std::int64_t firstRow) {
    std::optional<Pixel> first;
    return allSamples(capture, firstRow, [&](Pixel pixel) {
        if (!first)
            first = pixel;
        return haveSameColour(*first, pixel);
    });
}

/// Tells whether the luminance is below the limit. The weights of the channels, 0.2126, 0.7152 and
/// 0.0722, are multiplied by 10000, because real numbers would make a grey of 56 darker than 56.
bool isDark(Pixel pixel) {
    return (2126 * pixel[0]) + (7152 * pixel[1]) + (722 * pixel[2]) < 10000 * minLuminance;
}

} // namespace

bool isBlank(const Capture& capture) {
    return containsItsPixels(capture) && isUniform(capture, 0);
}

std::int64_t titleRows(std::int64_t height, double frameHeight) {
    // Written so that "not a number" gives 0.
    if (height < 2 || !(frameHeight > 0))
        return 0;
    const double covered = std::ceil(static_cast<double>(height) * titleBarHeight / frameHeight);
    const std::int64_t maxRows = height / maxTitlePart;
    return covered < static_cast<double>(maxRows) ? static_cast<std::int64_t>(covered) : maxRows;
}

bool isBlankBody(const Capture& capture, std::int64_t titleRows) {
    return containsItsPixels(capture) && titleRows >= 0 && titleRows < capture.height
           && (isUniform(capture, titleRows) || allSamples(capture, titleRows, isDark));
}

} // namespace velmo::ThumbnailCheck
