#include "core/probes/signature/InkPlane.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velmo {

namespace {

constexpr double radius = InkPlane::penWidth / 2;

/// Across the edge of a stroke the ink fades over the width of one pixel, half of it outside. At
/// this distance from the stroke the ink ends.
constexpr double reach = radius + 0.5;

constexpr std::uint8_t opaque = std::numeric_limits<std::uint8_t>::max();

/// Two points that are closer than this, in pixels, are drawn as one, because no direction can be
/// computed from them.
constexpr double minSegment = 1e-9;

struct Indices {
    std::size_t begin;
    std::size_t end;
};

/// Returns the pixels that lie, if only in part, between two places on an axis of `count` pixels.
Indices pixelsBetween(double low, double high, std::size_t count) {
    const auto max = static_cast<double>(count);
    return {.begin = static_cast<std::size_t>(std::clamp(std::floor(low), 0.0, max)),
            .end = static_cast<std::size_t>(std::clamp(std::ceil(high), 0.0, max))};
}

// These functions take values, unlike std::max and std::min, so that compilers can vectorise the
// loop in `cover`.
constexpr float larger(float a, float b) {
    return a < b ? b : a;
}

constexpr float smaller(float a, float b) {
    return b < a ? b : a;
}

double centre(std::size_t pixel) {
    return static_cast<double>(pixel) + 0.5;
}

/// A straight piece of a stroke, directed from its upper end to its lower one.
class Segment {
public:
    Segment(PenPoint a, PenPoint b) : from_(a.y <= b.y ? a : b), to_(a.y <= b.y ? b : a) {
        const double dx = to_.x - from_.x;
        const double dy = to_.y - from_.y;
        const double length = std::hypot(dx, dy);
        if (length >= minSegment) {
            length_ = length;
            direction_ = {.x = dx / length, .y = dy / length};
        }
    }

    [[nodiscard]] Indices rows(std::size_t height) const {
        return pixelsBetween(from_.y - reach, to_.y + reach, height);
    }

    /// Returns the columns that the ink can reach on a row.
    [[nodiscard]] Indices columns(double rowCentre, std::size_t width) const {
        const double start = xAt(rowCentre - reach);
        const double end = xAt(rowCentre + reach);
        return pixelsBetween(std::min(start, end) - reach, std::max(start, end) + reach, width);
    }

    /// Raises the coverage of the pixels of one row to the share that this segment covers, where
    /// the coverage is not higher already. The centre of the first pixel is at `at`.
    void cover(PenPoint at, std::span<std::uint8_t> pixels) const {
        const PenPoint offset{.x = at.x - from_.x, .y = at.y - from_.y};
        // In and near the picture single precision is finer than any shade of ink.
        const auto along = static_cast<float>(offset.x * direction_.x + offset.y * direction_.y);
        const auto across = static_cast<float>(offset.x * direction_.y - offset.y * direction_.x);
        const auto alongStep = static_cast<float>(direction_.x);
        const auto acrossStep = static_cast<float>(direction_.y);
        const auto length = static_cast<float>(length_);
        const auto inkEnd = static_cast<float>(reach);
        int steps = 0;
        for (std::uint8_t& pixel : pixels) {
            const float a = along + static_cast<float>(steps) * alongStep;
            const float beyondAnEnd = larger(larger(-a, a - length), 0);
            const float aside = across + static_cast<float>(steps) * acrossStep;
            const float distance = std::sqrt(beyondAnEnd * beyondAnEnd + aside * aside);
            const float share = smaller(larger(inkEnd - distance, 0), 1);
            const auto covered = static_cast<std::uint8_t>(share * opaque + 0.5F);
            pixel = pixel < covered ? covered : pixel;
            ++steps;
        }
    }

private:
    /// Returns the x at which the segment is at this height; beyond an end, the x of that end.
    [[nodiscard]] double xAt(double y) const {
        if (y <= from_.y)
            return from_.x;
        if (y >= to_.y)
            return to_.x;
        return from_.x + (y - from_.y) / (to_.y - from_.y) * (to_.x - from_.x);
    }

    PenPoint from_;
    PenPoint to_;
    double length_ = 0;
    PenPoint direction_{.x = 1, .y = 0}; ///< of unit length
};

} // namespace

InkPlane::InkPlane(std::size_t width, std::size_t height)
    : width_(width),
      height_(height),
      ink_(width * height),
      inked_(height),
      coverage_(width * height),
      touched_(height) {
}

void InkPlane::draw(std::span<const PenPoint> stroke) {
    if (stroke.size() == 1)
        cover(stroke[0], stroke[0]);
    for (std::size_t i = 1; i < stroke.size(); ++i)
        cover(stroke[i - 1], stroke[i]);
    composite();
}

void InkPlane::cover(PenPoint from, PenPoint to) {
    const Segment segment(from, to);
    const auto [firstRow, endRow] = segment.rows(height_);
    for (std::size_t y = firstRow; y < endRow; ++y) {
        const auto [begin, end] = segment.columns(centre(y), width_);
        if (begin == end)
            continue;
        segment.cover({.x = centre(begin), .y = centre(y)},
                      std::span(coverage_).subspan(y * width_ + begin, end - begin));
        Columns& touched = touched_[y];
        touched = touched.end == 0 ? Columns{.begin = begin, .end = end}
                                   : Columns{.begin = std::min(touched.begin, begin),
                                             .end = std::max(touched.end, end)};
    }
}

/// Lays the finished stroke over the earlier ink, which still shows only where the stroke does not
/// cover it ("source over"). Called once per stroke, so that a stroke which crosses itself is not
/// darker there.
void InkPlane::composite() {
    for (std::size_t y = 0; y < height_; ++y) {
        const auto [begin, end] = std::exchange(touched_[y], {});
        std::uint8_t* const ink = &ink_[y * width_];
        std::uint8_t* const coverage = &coverage_[y * width_];
        for (std::size_t x = begin; x < end; ++x) {
            const unsigned hidden = (ink[x] * coverage[x] + opaque / 2U) / opaque;
            ink[x] = static_cast<std::uint8_t>(ink[x] + coverage[x] - hidden);
            coverage[x] = 0;
        }
        inked_[y] = inked_[y] || begin != end;
    }
}

} // namespace velmo
