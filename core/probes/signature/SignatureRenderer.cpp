#include "core/probes/signature/SignatureRenderer.h"

#include "core/probes/signature/InkPlane.h"
#include "core/probes/signature/RgbaPng.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <new>
#include <vector>

namespace velmo::SignatureRenderer {

namespace {

using Color = std::array<std::uint8_t, 3>;

// The drawing is a pixel narrower and lower than the picture and shares its lower left corner, so
// that the upper edge of the drawing lies a pixel below that of the picture.
constexpr double xScale = width - 1;
constexpr double yScale = height - 1;
constexpr double yOffset = 1;

/// Coordinates are limited to this many widths or heights of the drawing, in either direction.
constexpr double maxCoordinate = 1000;
static_assert(maxCoordinate * xScale < InkPlane::maxCoordinate);

double bounded(double coordinate) {
    return std::clamp(coordinate, -maxCoordinate, maxCoordinate);
}

bool isPoint(const SignatureBody::Point& point) {
    return point.size() == 2 && std::isfinite(point[0]) && std::isfinite(point[1]);
}

/// Returns an empty list if any point of the stroke is invalid: the part of the stroke at that
/// point is unknown.
std::vector<PenPoint> penPoints(const SignatureBody::Stroke& stroke) {
    std::vector<PenPoint> points;
    for (const SignatureBody::Point& point : stroke) {
        if (!isPoint(point))
            return {};
        points.push_back(
            {.x = bounded(point[0]) * xScale, .y = yOffset + bounded(point[1]) * yScale});
    }
    return points;
}

using Pixel = std::array<std::uint8_t, 4>;

/// Returns the pixel for each opacity. The pixel has the colour of the ink, whatever its opacity; a
/// fully transparent pixel is all zero.
constexpr std::array<Pixel, 256> pixelsOf(const Color& ink) {
    std::array<Pixel, 256> pixels{};
    for (std::size_t alpha = 1; alpha < pixels.size(); ++alpha)
        pixels[alpha] = {ink[0], ink[1], ink[2], static_cast<std::uint8_t>(alpha)};
    return pixels;
}

constexpr auto bluePixels = pixelsOf({30, 64, 175});
constexpr auto blackPixels = pixelsOf({24, 24, 27});

} // namespace

std::optional<Bytes> png(std::span<const SignatureBody::Stroke> strokes, bool blue) try {
    InkPlane plane(width, height);
    for (const SignatureBody::Stroke& stroke : strokes)
        plane.draw(penPoints(stroke));
    const auto& pixels = blue ? bluePixels : blackPixels;
    std::vector<Pixel> row(width);
    return RgbaPng::encode(width, height, [&](std::size_t y) -> ByteView {
        if (plane.isBlank(y))
            return {};
        std::ranges::transform(plane.row(y), row.begin(),
                               [&](std::uint8_t alpha) { return pixels[alpha]; });
        return {row.front().data(), width * sizeof(Pixel)};
    });
} catch (const std::bad_alloc&) {

    return std::nullopt;
}

} // namespace velmo::SignatureRenderer
