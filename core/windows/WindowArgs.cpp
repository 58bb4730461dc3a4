#include "core/windows/WindowArgs.h"

#include "core/support/Decimal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace velmo::WindowArgs {

namespace {

constexpr std::size_t maxIdDigits = 10;
constexpr std::size_t maxWidthDigits = 4;
constexpr std::int32_t minMaxWidth = 32;   ///< pixels
constexpr std::int32_t maxMaxWidth = 1024; ///< pixels

template<class Integer>
std::optional<Integer> number(std::optional<std::string_view> text, std::size_t maxDigits,
                              Decimal::Range<Integer> range) {
    if (!text || text->size() > maxDigits)
        return std::nullopt;
    return Decimal::parseUnsigned<Integer>(*text, range);
}

std::int32_t pixels(double length) {
    return static_cast<std::int32_t>(
        std::clamp<double>(std::round(length), 1, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

std::optional<std::uint32_t> windowId(std::optional<std::string_view> text) {
    return number<std::uint32_t>(text, maxIdDigits, {.min = 1});
}

std::optional<std::int32_t> maxWidth(std::optional<std::string_view> text) {
    return number<std::int32_t>(text, maxWidthDigits, {.min = minMaxWidth, .max = maxMaxWidth});
}

ThumbnailSize thumbnailSize(double width, double height, std::int32_t maxWidth) {
    if (!std::isfinite(width) || !std::isfinite(height) || width <= 0 || height <= 0)
        return {};
    const double scale = std::min({1.0, maxWidth / width, 2.0 * maxWidth / height});
    return {.width = pixels(width * scale), .height = pixels(height * scale)};
}

} // namespace velmo::WindowArgs
