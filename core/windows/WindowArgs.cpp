#include "core/windows/WindowArgs.h"

#include "core/support/Ascii.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace velmo::WindowArgs {

namespace {

constexpr std::size_t mostIdDigits = 10;
constexpr std::size_t mostWidthDigits = 4;
constexpr std::int32_t narrowestLimit = 32; ///< pixels
constexpr std::int32_t widestLimit = 1024;  ///< pixels

template<class Integer>
std::optional<Integer> decimal(std::optional<std::string_view> text, std::size_t mostDigits,
                               Integer lowest, Integer highest) {
    if (!text || text->size() > mostDigits)
        return std::nullopt;
    const auto value = Ascii::decimal<Integer>(*text);
    return value >= lowest && value <= highest ? value : std::nullopt;
}

std::int32_t pixels(double length) {
    return static_cast<std::int32_t>(
        std::clamp<double>(std::round(length), 1, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

std::optional<std::uint32_t> windowId(std::optional<std::string_view> text) {
    constexpr auto highest = std::numeric_limits<std::uint32_t>::max();
    return decimal<std::uint32_t>(text, mostIdDigits, 1, highest);
}

std::optional<std::int32_t> maxWidth(std::optional<std::string_view> text) {
    return decimal(text, mostWidthDigits, narrowestLimit, widestLimit);
}

ThumbnailSize thumbnailSize(double width, double height, std::int32_t maxWidth) {
    if (!std::isfinite(width) || !std::isfinite(height) || width <= 0 || height <= 0)
        return {};
    const double scale = std::min({1.0, maxWidth / width, 2.0 * maxWidth / height});
    return {.width = pixels(width * scale), .height = pixels(height * scale)};
}

} // namespace velmo::WindowArgs
