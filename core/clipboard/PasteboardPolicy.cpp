#include "core/clipboard/PasteboardPolicy.h"

#include "core/support/BigEndian.h"
#include "core/support/Text.h"

#include <algorithm>
#include <functional>
#include <set>

namespace velmo::PasteboardPolicy {

namespace {

constexpr std::string_view headerChunk = "IHDR";
constexpr std::size_t headerChunkAt = 12;
constexpr std::size_t widthAt = 16;
constexpr std::size_t heightAt = 20;
constexpr std::size_t sizeEnd = 24;

bool isConcealedType(const std::string& type) {
    static const auto concealedLower = [] {
        std::set<std::string, std::less<>> lower;
        for (const std::string_view concealed : concealedTypes)
            lower.insert(Text::lowercased(concealed));
        return lower;
    }();
    return concealedLower.contains(Text::lowercased(type));
}

std::uint32_t numberAt(ByteView data, std::size_t position) {
    return static_cast<std::uint32_t>(BigEndian::read(data.subspan(position, 4)));
}

bool sideFits(std::uint32_t side) {
    return side >= 1 && side <= pngMaxSide;
}

} // namespace

bool isPrivate(Types types) {
    return std::ranges::any_of(types, isConcealedType);
}

Content pick(Types types) {
    const auto lists = [&](std::string_view type) {
        return std::ranges::find(types, type) != types.end();
    };
    if (isPrivate(types))
        return Content::none;
    if (std::ranges::any_of(textTypes, lists))
        return Content::text;
    if (lists(pngType))
        return Content::png;
    return lists(tiffType) ? Content::tiff : Content::none;
}

std::string_view watchKind(Types types) {
    if (isPrivate(types))
        return "concealed";
    switch (pick(types)) {
    case Content::text:
        return "text";
    case Content::png:
    case Content::tiff:
        return "image";
    case Content::none:
        break;
    }
    return "empty";
}

bool textFits(std::string_view text) {
    return !text.empty() && text.size() <= textMaxBytes;
}

bool isPNG(ByteView data) {
    return data.size() > pngMagic.size()
           && std::ranges::equal(data.first(pngMagic.size()), pngMagic);
}

std::optional<PngSize> pngSize(ByteView data) {
    if (!isPNG(data) || data.size() < sizeEnd
        || textOf(data.subspan(headerChunkAt, headerChunk.size())) != headerChunk)
        return std::nullopt;
    return PngSize{.width = numberAt(data, widthAt), .height = numberAt(data, heightAt)};
}

bool pngDimensionsOK(ByteView data) {
    const auto size = pngSize(data);
    return size && sideFits(size->width) && sideFits(size->height)
           && std::uint64_t{size->width} * size->height <= pngMaxPixels;
}

} // namespace velmo::PasteboardPolicy
