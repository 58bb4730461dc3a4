#include "core/windows/CaptureGate.h"
#include "core/windows/ThumbnailCheck.h"
#include "core/windows/WindowArgs.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <string>

namespace velmo {
namespace {

using testing::ElementsAre;
using ThumbnailCheck::Capture;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::nan("");
constexpr std::int64_t most = INT64_MAX;

TEST(WindowArgs, ReadsNumbersWithinTheirLimits) {
    EXPECT_EQ(WindowArgs::windowId("0000000007"), 7U);
    EXPECT_EQ(WindowArgs::windowId("4294967295"), 4294967295);
    for (const char* text : {"", "0", "4294967296", "9999999999", "00000000007", "-1", "+1", "1 "})
        EXPECT_FALSE(WindowArgs::windowId(text)) << text;
    EXPECT_EQ(WindowArgs::maxWidth("0032"), 32);
    EXPECT_EQ(WindowArgs::maxWidth("1024"), 1024);
    for (const char* text : {"", "31", "1025", "01024", "64.0", "-64", "6\u0664"})
        EXPECT_FALSE(WindowArgs::maxWidth(text)) << text;
    EXPECT_FALSE(WindowArgs::windowId(std::nullopt) || WindowArgs::maxWidth(std::nullopt));
}

TEST(WindowArgs, ThumbnailsShrinkButNeverGrow) {
    const std::array<double, 4> cases[] = {
        {2000, 500, 400, 100}, {100, 3000, 27, 800},    {400, 800, 400, 800},
        {10.5, 10.4, 11, 10},  {10000, 1, 400, 1},      {0.1, 0.1, 1, 1},
        {0, 100, 0, 0},        {100, -1, 0, 0},         {infinity, 100, 0, 0},
        {100, nan, 0, 0},      {1e308, 1e-320, 400, 1}, {1e-320, 1e308, 1, 800}};
    for (const auto& [width, height, thumbnailWidth, thumbnailHeight] : cases) {
        const auto size = WindowArgs::thumbnailSize(width, height, 400);
        EXPECT_EQ(size.width, thumbnailWidth) << width << " x " << height;
        EXPECT_EQ(size.height, thumbnailHeight) << width << " x " << height;
    }
    EXPECT_EQ(WindowArgs::thumbnailSize(1e308, 1e308, INT32_MAX),
              (WindowArgs::ThumbnailSize{INT32_MAX, INT32_MAX}));
    EXPECT_EQ(WindowArgs::thumbnailSize(100, 100, -5), (WindowArgs::ThumbnailSize{1, 1}));
}

using Pixel = std::array<std::uint8_t, 4>;
constexpr Pixel grey{100, 100, 100, 255};
constexpr Pixel white{255, 255, 255, 255};
constexpr Pixel clear{0, 0, 0, 0};

/// Of one colour, with other pixels behind every row but the last.
struct Picture {
    Picture(int columns, int rows, Pixel fill = grey)
        : width(columns),
          height(rows),
          pixels(static_cast<std::size_t>((stride() * (rows - 1)) + columns), Pixel{9, 9, 9, 9}) {
        for (int i = 0; i < width * height; ++i)
            set(i % width, i / width, fill);
    }

    [[nodiscard]] int stride() const { return width + 3; }

    Picture& set(int column, int row, Pixel pixel) {
        const int index = (row * stride()) + column;
        pixels.at(static_cast<std::size_t>(index)) = pixel;
        return *this;
    }

    [[nodiscard]] Capture capture() const {
        return {
            {pixels.data()->data(), pixels.size() * 4}, width, height, std::int64_t{stride()} * 4};
    }

    [[nodiscard]] bool isBlank() const { return ThumbnailCheck::isBlank(capture()); }

    [[nodiscard]] bool isBlankBody(std::int64_t titleRows) const {
        return ThumbnailCheck::isBlankBody(capture(), titleRows);
    }

    int width, height;
    std::vector<Pixel> pixels;
};

TEST(ThumbnailCheck, OneColourIsBlank) {
    EXPECT_TRUE(Picture(10, 10, {103, 97, 103, 255}).set(0, 0, grey).isBlank());
    for (const Pixel other : {Pixel{104, 100, 100, 255}, {100, 96, 100, 255}, {100, 100, 104, 1}})
        EXPECT_FALSE(Picture(10, 10).set(9, 9, other).isBlank());
    // What is transparent counts for nothing, be it the first pixel; alpha is not compared.
    EXPECT_TRUE(Picture(10, 10).set(0, 0, clear).set(1, 0, {99, 99, 99, 1}).isBlank());
    EXPECT_TRUE(Picture(2, 2, clear).isBlank());
    // Compared with the first one, not with the one before: a gradient is no single colour.
    EXPECT_FALSE(
        Picture(3, 1).set(1, 0, {103, 100, 100, 9}).set(2, 0, {106, 100, 100, 9}).isBlank());
}

TEST(ThumbnailCheck, LargeCapturesAreSampled) {
    const auto sees = [](int width, int height, int column, int row) {
        return !Picture(width, height).set(column, row, white).isBlank();
    };
    EXPECT_TRUE(sees(255, 1, 1, 0) && sees(256, 1, 2, 0) && !sees(256, 1, 1, 0));
    EXPECT_TRUE(sees(1, 255, 0, 254) && sees(1, 256, 0, 254) && !sees(1, 256, 0, 255));
    EXPECT_TRUE(sees(700, 400, 5, 3) && !sees(700, 400, 4, 3) && !sees(700, 400, 5, 4));
    // The rows of a body are counted from below the title bar.
    EXPECT_FALSE(Picture(1, 256).set(0, 2, white).isBlankBody(1));
    EXPECT_TRUE(Picture(1, 257).set(0, 254, white).isBlankBody(1));
}

TEST(ThumbnailCheck, WhatIsTooShortOrHasNoSizeIsNotCalledBlank) {
    const Picture picture(3, 3);
    const auto [bytes, width, height, bytesPerRow] = picture.capture();
    std::vector<Capture> refused = {{bytes.first(bytes.size() - 1), width, height, bytesPerRow},
                                    {bytes, width, height, (width * 4) - 1}};
    for (const std::int64_t odd : {std::int64_t{0}, std::int64_t{-1}, most, most / 4, INT64_MIN})
        refused.insert(refused.end(), {{bytes, odd, height, bytesPerRow},
                                       {bytes, width, odd, bytesPerRow},
                                       {bytes, width, height, odd},
                                       {bytes, odd, odd, odd}});
    for (const Capture& capture : refused)
        EXPECT_FALSE(ThumbnailCheck::isBlank(capture) || ThumbnailCheck::isBlankBody(capture, 0))
            << capture.width << " x " << capture.height << ", " << capture.bytesPerRow;
    EXPECT_TRUE(ThumbnailCheck::isBlank({bytes.first(12), width, 1, 12}));
}

TEST(ThumbnailCheck, ABodyIsBlankBelowItsTitleBarWhenPlainOrDark) {
    const Picture titled = Picture(2, 8).set(1, 1, white);
    EXPECT_TRUE(titled.isBlankBody(2));
    for (const std::int64_t rows : {std::int64_t{1}, std::int64_t{-1}, std::int64_t{8}, most})
        EXPECT_FALSE(titled.isBlankBody(rows)) << rows;
    const Picture black(8, 8, {0, 0, 0, 255});
    for (const Pixel brightest :
         {Pixel{55, 55, 55, 255}, {255, 0, 0, 9}, {0, 78, 0, 9}, {0, 0, 255, 9}})
        EXPECT_TRUE(Picture(black).set(5, 5, brightest).isBlankBody(2)) << int{brightest[1]};
    for (const Pixel brightest : {Pixel{56, 56, 56, 255}, {0, 79, 0, 255}})
        EXPECT_FALSE(Picture(black).set(5, 5, brightest).isBlankBody(2)) << int{brightest[1]};
    EXPECT_TRUE(Picture(8, 8, clear).isBlankBody(0));
}

TEST(ThumbnailCheck, ATitleBarIsAQuarterOfTheCaptureAtMost) {
    const std::array<double, 3> cases[] = {{800, 400, 80}, {401, 800, 21},     {400, 100, 100},
                                           {3, 400, 0},    {4, 4000, 1},       {403, 1e-300, 100},
                                           {1, 400, 0},    {-9, 400, 0},       {400, 0, 0},
                                           {400, -1, 0},   {400, infinity, 0}, {400, nan, 0}};
    for (const auto& [height, frameHeight, rows] : cases)
        EXPECT_EQ(ThumbnailCheck::titleRows(std::llround(height), frameHeight), rows)
            << height << " of " << frameHeight;
    EXPECT_EQ(ThumbnailCheck::titleRows(most, 80), most / 4);
}

TEST(CaptureGate, TriesUntilTheWaitIsOverAndOnceMore) {
    /// When it tries, if the clock runs only while somebody sleeps.
    const auto tries = [](double freeAt, double wait, double poll) {
        double now = 0;
        std::vector<double> times;
        const auto tryLock = [&] { return times.emplace_back(now) >= freeAt; };
        const auto sleep = [&](double seconds) { now += seconds; };
        const bool got = CaptureGate::acquire(wait, poll, [&] { return now; }, sleep, tryLock);
        EXPECT_EQ(got, now >= freeAt);
        return times;
    };
    EXPECT_THAT(tries(0, -1, 1), ElementsAre(0));
    EXPECT_THAT(tries(2, 3, 1), ElementsAre(0, 1, 2));
    EXPECT_THAT(tries(9, 2, 1), ElementsAre(0, 1, 2));
    EXPECT_THAT(tries(4, 2.5, 2), ElementsAre(0, 2, 4));
    EXPECT_THAT(tries(9, nan, 1), ElementsAre(0));
    EXPECT_THAT(tries(3, infinity, 1), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(CaptureGate::lockPath("/tmp"), "/tmp/velmo-window-capture.lock");
    EXPECT_EQ(CaptureGate::lockPath("/tmp/"), "/tmp/velmo-window-capture.lock");
}

} // namespace
} // namespace velmo
