#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Arguments of a request for a window's thumbnail, and the size that the thumbnail gets.
namespace velmo::WindowArgs {

/// A window number: 1 to 10 ASCII digits, not 0, within 32 bits; leading zeros are let pass.
std::optional<std::uint32_t> windowId(std::optional<std::string_view> text);

/// The widest that a thumbnail may be, in pixels: 1 to 4 ASCII digits, 32...1024.
std::optional<std::int32_t> maxWidth(std::optional<std::string_view> text);

struct ThumbnailSize {
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const ThumbnailSize&) const = default;
};

/// The window's size, in points, scaled down to be at most `maxWidth` wide and twice as high, and
/// never up. Each side is rounded, and at least 1. Zero by zero for a window whose size is not
/// finite or not above 0.
ThumbnailSize thumbnailSize(double width, double height, std::int32_t maxWidth);

} // namespace velmo::WindowArgs
