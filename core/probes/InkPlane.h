#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velmo {

/// Where the pen was, in pixels from the left and the upper edge of the picture. The centre of
/// pixel (column, row) is at (column + 0.5, row + 0.5).
struct PenPoint {
    double x = 0;
    double y = 0;
};

/// The drawing surface of a signature: for each pixel how opaque the ink on it is, 0 to 255.
class InkPlane {
public:
    static constexpr double penWidth = 4; ///< pixels; also the diameter of a dot

    /// Pixels from the upper left corner, along either axis, within which every point must lie:
    /// lengths between points without bound would end in infinity.
    static constexpr double furthest = 1e9;

    InkPlane(std::size_t width, std::size_t height);

    /// Draws straight lines from point to point, with round ends and joins and smooth edges, over
    /// what is there; one point is a dot. Where a stroke crosses itself it is no darker. Points may
    /// lie outside the picture, within `furthest`.
    void draw(std::span<const PenPoint> stroke);

    [[nodiscard]] std::span<const std::uint8_t> row(std::size_t y) const {
        return std::span(ink_).subspan(y * width_, width_);
    }

    /// Whether there is any ink on a row.
    [[nodiscard]] bool isBlank(std::size_t y) const { return !inked_[y]; }

private:
    struct Columns {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    void cover(PenPoint from, PenPoint to);
    void composite();

    std::size_t width_;
    std::size_t height_;
    std::vector<std::uint8_t> ink_;
    std::vector<bool> inked_;
    // Of the stroke that is being drawn; all zero between strokes.
    std::vector<std::uint8_t> coverage_;
    std::vector<Columns> touched_; ///< by row
};

} // namespace velmo
