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
constexpr int sameColour = 3;         ///< largest difference in a channel
constexpr int darkBelow = 56;         ///< luminance
constexpr double titleBarHeight = 40; ///< points
constexpr std::int64_t mostTitleParts = 4;

using Pixel = std::span<const std::uint8_t, bytesPerPixel>;

/// Written with divisions: products of such numbers may be beyond 64 bits.
bool holdsItsPixels(const Capture& capture) {
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

/// Whether the test holds for every opaque sample from `firstRow` down.
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
    return std::abs(a[0] - b[0]) <= sameColour && std::abs(a[1] - b[1]) <= sameColour
           && std::abs(a[2] - b[2]) <= sameColour;
}

bool isUniform(const Capture& capture, std::int64_t firstRow) {
    std::optional<Pixel> first;
    return allSamples(capture, firstRow, [&](Pixel pixel) {
        if (!first)
            first = pixel;
        return haveSameColour(*first, pixel);
    });
}

/// The weights of the channels, 0.2126, 0.7152 and 0.0722, times 10000: exact, where reals would
/// make a grey of 56 a little darker than 56.
bool isDark(Pixel pixel) {
    return (2126 * pixel[0]) + (7152 * pixel[1]) + (722 * pixel[2]) < 10000 * darkBelow;
}

} // namespace

bool isBlank(const Capture& capture) {
    return holdsItsPixels(capture) && isUniform(capture, 0);
}

std::int64_t titleRows(std::int64_t height, double frameHeight) {
    // Written so that "not a number" gives 0.
    if (height < 2 || !(frameHeight > 0))
        return 0;
    const double covered = std::ceil(static_cast<double>(height) * titleBarHeight / frameHeight);
    const std::int64_t most = height / mostTitleParts;
    return covered < static_cast<double>(most) ? static_cast<std::int64_t>(covered) : most;
}

bool isBlankBody(const Capture& capture, std::int64_t titleRows) {
    return holdsItsPixels(capture) && titleRows >= 0 && titleRows < capture.height
           && (isUniform(capture, titleRows) || allSamples(capture, titleRows, isDark));
}

} // namespace velmo::ThumbnailCheck
