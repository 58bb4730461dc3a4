#include "core/probes/InkPlane.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velmo {

namespace {

constexpr double radius = InkPlane::penWidth / 2;

/// Ink fades over the pixel that lies across the edge: from here on there is none.
constexpr double reach = radius + 0.5;

constexpr std::uint8_t opaque = std::numeric_limits<std::uint8_t>::max();

/// Points that are closer are one: no direction could be computed from them.
constexpr double shortestSegment = 1e-9;

struct Indices {
    std::size_t begin;
    std::size_t end;
};

/// The pixels whose centres can lie between two places on an axis of `count` pixels.
Indices pixelsBetween(double low, double high, std::size_t count) {
    const auto most = static_cast<double>(count);
    return {.begin = static_cast<std::size_t>(std::clamp(std::floor(low), 0.0, most)),
            .end = static_cast<std::size_t>(std::clamp(std::ceil(high), 0.0, most))};
}

// By value, unlike std::max and std::min: compilers then work on several pixels at a time.
constexpr float larger(float a, float b) {
    return a < b ? b : a;
}

constexpr float smaller(float a, float b) {
    return b < a ? b : a;
}

double centre(std::size_t pixel) {
    return static_cast<double>(pixel) + 0.5;
}

/// A straight piece of a stroke, from its upper end down.
class Segment {
public:
    Segment(PenPoint a, PenPoint b) : from_(a.y <= b.y ? a : b), to_(a.y <= b.y ? b : a) {
        const double dx = to_.x - from_.x;
        const double dy = to_.y - from_.y;
        const double length = std::hypot(dx, dy);
        if (length >= shortestSegment) {
            length_ = length;
            direction_ = {.x = dx / length, .y = dy / length};
        }
    }

    [[nodiscard]] Indices rows(std::size_t height) const {
        return pixelsBetween(from_.y - reach, to_.y + reach, height);
    }

    /// The columns that the ink can touch on a row.
    [[nodiscard]] Indices columns(double rowCentre, std::size_t width) const {
        const double start = xAt(rowCentre - reach);
        const double end = xAt(rowCentre + reach);
        return pixelsBetween(std::min(start, end) - reach, std::max(start, end) + reach, width);
    }

    /// Raises the coverage of the pixels of one row, of which the first has its centre at `at`, to
    /// what this segment covers of each.
    void cover(PenPoint at, std::span<std::uint8_t> pixels) const {
        const PenPoint offset{.x = at.x - from_.x, .y = at.y - from_.y};
        // Relative to this row single precision is finer than any shade of ink.
        const auto along = static_cast<float>(offset.x * direction_.x + offset.y * direction_.y);
        const auto across = static_cast<float>(offset.x * direction_.y - offset.y * direction_.x);
        const auto alongStep = static_cast<float>(direction_.x);
        const auto acrossStep = static_cast<float>(direction_.y);
        const auto length = static_cast<float>(length_);
        const auto furthest = static_cast<float>(reach);
        int steps = 0;
        for (std::uint8_t& pixel : pixels) {
            const float a = along + static_cast<float>(steps) * alongStep;
            const float beyondAnEnd = larger(larger(-a, a - length), 0);
            const float aside = across + static_cast<float>(steps) * acrossStep;
            const float distance = std::sqrt(beyondAnEnd * beyondAnEnd + aside * aside);
            const float share = smaller(larger(furthest - distance, 0), 1);
            const auto covered = static_cast<std::uint8_t>(share * opaque + 0.5F);
            pixel = pixel < covered ? covered : pixel;
            ++steps;
        }
    }

private:
    /// Where it is at a height, or its nearer end.
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

/// Source over, once a stroke: of what is there, the part shows that the stroke leaves uncovered.
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
