#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velmo {

/// A place of the pen, in pixels from the left and the upper edge of the picture. The centre of
/// pixel (column, row) is at (column + 0.5, row + 0.5).
struct PenPoint {
    double x = 0;
    double y = 0;
};

/// The drawing surface of a signature, which stores for each pixel how opaque the ink on it is, 0
/// to 255.
///
/// A stroke covers a pixel to the share 2.5 - d, limited to 0...1, where d is the distance of the
/// pixel's centre from the nearest place on the stroke. The opacity is rounded to the nearest whole
/// number.
class InkPlane {
public:
    static constexpr double penWidth = 4; ///< pixels; also the diameter of a dot

    /// The largest absolute coordinate of a point, in pixels. Without a limit the length of a line
    /// could be infinite.
    static constexpr double maxCoordinate = 1e9;

    InkPlane(std::size_t width, std::size_t height);

    /// Draws straight lines from point to point, with round ends and joins, over the ink that is
    /// there already. A single point makes a dot. A stroke is not darker where it crosses itself.
    /// Points may lie outside the picture, within `maxCoordinate`.
    void draw(std::span<const PenPoint> stroke);

    /// Returns the opacities of a row's pixels, valid until the next stroke is drawn.
    [[nodiscard]] std::span<const std::uint8_t> row(std::size_t y) const {
        return std::span(ink_).subspan(y * width_, width_);
    }

    /// Tells whether every stroke stayed clear of the row. A blank row has no ink, but a row that a
    /// stroke merely came close to may have no ink and still not be blank.
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
    // How the stroke that is being drawn covers the pixels, and the columns that it may have
    // reached on each row; all zero between strokes.
    std::vector<std::uint8_t> coverage_;
    std::vector<Columns> touched_;
};

} // namespace velmo
