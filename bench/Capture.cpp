#include "bench/Suite.h"
#include "core/windows/ThumbnailCheck.h"

#include <cstring>
#include <memory>

namespace velmo::bench {

namespace {

constexpr std::int64_t captureWidth = 3840;  ///< pixels
constexpr std::int64_t captureHeight = 2160; ///< pixels
constexpr std::int64_t bytesPerRow = captureWidth * 4;

/// Returns a picture of one colour, which is known to be blank only when all of it was looked at.
Bytes blankCapture() {
    Bytes bytes(static_cast<std::size_t>(bytesPerRow * captureHeight));
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        bytes[i] = 40;
        bytes[i + 1] = 44;
        bytes[i + 2] = 52;
        bytes[i + 3] = 255;
    }
    return bytes;
}

/// Tells whether a picture is blank by looking at every pixel.
bool isBlankThroughout(const Bytes& bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        if (std::memcmp(bytes.data() + i, bytes.data(), 4) != 0)
            return false;
    }
    return true;
}

} // namespace

void addCapture(Suite& suite) {
    const auto bytes = std::make_shared<const Bytes>(blankCapture());
    const auto capture = [=] {
        return ThumbnailCheck::Capture{.bytes = *bytes,
                                       .width = captureWidth,
                                       .height = captureHeight,
                                       .bytesPerRow = bytesPerRow};
    };
    const Body everyPixel = [=](benchmark::State& state) {
        for (auto _ : state)
            use(isBlankThroughout(*bytes));
    };
    // Runs on one machine come to between 37 and 58.
    const auto compare = [&](const std::string& what, const Body& body) {
        suite.compare({.what = what,
                       .input = "3840 x 2160",
                       .aims = {{.contender = "every pixel", .factor = 35}}},
                      {{ours, body}, {"every pixel", everyPixel}});
    };
    compare("ThumbnailCheck::isBlank", [=](benchmark::State& state) {
        for (auto _ : state)
            use(ThumbnailCheck::isBlank(capture()));
    });
    compare("ThumbnailCheck::isBlankBody", [=](benchmark::State& state) {
        for (auto _ : state)
            use(ThumbnailCheck::isBlankBody(capture(), 80));
    });
}

} // namespace velmo::bench
