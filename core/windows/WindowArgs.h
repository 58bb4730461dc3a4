#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Reads the arguments of a request for a window's thumbnail, and computes the thumbnail's size.
namespace velmo::WindowArgs {

/// Reads a window number of 1...2^32-1: 1 to 10 ASCII digits, perhaps with leading zeros.
std::optional<std::uint32_t> windowId(std::optional<std::string_view> text);

/// Reads the limit of a thumbnail's width, 32...1024 pixels: 1 to 4 ASCII digits, perhaps with
/// leading zeros.
std::optional<std::int32_t> maxWidth(std::optional<std::string_view> text);

struct ThumbnailSize {
    std::int32_t width = 0;  ///< pixels
    std::int32_t height = 0; ///< pixels

    bool operator==(const ThumbnailSize&) const = default;
};

/// Returns the window's size, in points, scaled down until the width is at most `maxWidth` and the
/// height at most twice `maxWidth`. A size within these limits is not scaled up. Both sides are
/// rounded and at least 1, but both are 0 if a side of the window is not finite or not above 0.
ThumbnailSize thumbnailSize(double width, double height, std::int32_t maxWidth);

} // namespace velmo::WindowArgs
