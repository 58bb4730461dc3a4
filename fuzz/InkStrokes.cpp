#include "core/probes/signature/InkPlane.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace velmo::Fuzz {

namespace {

/// The input is a list of points, each two doubles as they lie in memory. A point that is not
/// within the limit ends a stroke.
void checkInkStrokes(Input input) {
    constexpr std::size_t width = 24;
    constexpr std::size_t height = 12;
    InkPlane plane(width, height);
    std::vector<PenPoint> stroke;
    for (ByteView rest = input.restBytes(); rest.size() >= sizeof(PenPoint);
         rest = rest.subspan(sizeof(PenPoint))) {
        PenPoint point;
        std::memcpy(&point, rest.data(), sizeof point);
        if (std::abs(point.x) <= InkPlane::maxCoordinate
            && std::abs(point.y) <= InkPlane::maxCoordinate) {
            stroke.push_back(point);
            continue;
        }
        plane.draw(stroke);
        stroke.clear();
    }
    plane.draw(stroke);
    for (std::size_t y = 0; y < height; ++y) {
        const auto ink = plane.row(y);
        require(!plane.isBlank(y) || std::ranges::count(ink, 0) == std::ssize(ink));
    }
}

const Target inkStrokesTarget("InkStrokes", checkInkStrokes);

} // namespace

} // namespace velmo::Fuzz
