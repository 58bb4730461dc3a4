#include "core/clipboard/PasteboardPolicy.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkPngHeaders(Input input) {
    using namespace PasteboardPolicy;
    const ByteView data = input.restBytes();
    const auto size = pngSize(data);
    require(!size || (isPNG(data) && pngSize(data.first(24)) == size));
    if (!pngDimensionsOK(data))
        return;
    require(size && size->width >= 1 && size->width <= pngMaxSide && size->height >= 1
            && size->height <= pngMaxSide);
    require(std::uint64_t{size->width} * size->height <= pngMaxPixels);
}

const Target pngHeadersTarget("PngHeaders", checkPngHeaders);

} // namespace

} // namespace velmo::Fuzz
