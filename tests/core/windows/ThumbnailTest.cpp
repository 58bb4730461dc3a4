#include "core/windows/CaptureGate.h"
#include "core/windows/ThumbnailCheck.h"
#include "core/windows/WindowArgs.h"
#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmo {
namespace {

using ThumbnailCheck::Capture, ThumbnailCheck::isBlank, ThumbnailCheck::isBlankBody;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::nan("");
constexpr std::int64_t most = INT64_MAX;

TEST(WindowArgs, ReadsNumbersWithinTheirLimits) {
    EXPECT_EQ(WindowArgs::windowId("0000000007"), 7U);
    EXPECT_EQ(WindowArgs::windowId("4294967295"), 4294967295);
    expectVerdicts(WindowArgs::maxWidth, {"0032", "1024"},
                   {"", "31", "1025", "01024", "64.0", "-64", "6\u0664"});
    expectRefused(WindowArgs::windowId, {"", "0", "4294967296", "00000000007", "-1", "+1", "1 "});
    EXPECT_FALSE(WindowArgs::windowId(std::nullopt) || WindowArgs::maxWidth(std::nullopt));
}

TEST(WindowArgs, ThumbnailsShrinkButNeverGrow) {
    using Size = WindowArgs::ThumbnailSize;
    const auto size = [](double width, double height, std::int32_t maxWidth = 400) {
        return WindowArgs::thumbnailSize(width, height, maxWidth);
    };
    EXPECT_EQ(size(2000, 500), (Size{.width = 400, .height = 100}));
    EXPECT_EQ(size(100, 3000), (Size{.width = 27, .height = 800}));
    EXPECT_EQ(size(400, 800), (Size{.width = 400, .height = 800}));
    EXPECT_EQ(size(10.5, 10.4), (Size{.width = 11, .height = 10}));
    EXPECT_EQ(size(1e308, 1e-320), (Size{.width = 400, .height = 1}));
    EXPECT_EQ(size(1e308, 1e308, INT32_MAX), (Size{.width = INT32_MAX, .height = INT32_MAX}));
    EXPECT_EQ(size(100, 100, -5), (Size{.width = 1, .height = 1}));
    for (const double odd : {0.0, -1.0, infinity, nan})
        EXPECT_TRUE(size(odd, 100) == Size() && size(100, odd) == Size()) << odd;
}

using Pixel = std::array<std::uint8_t, 4>;
constexpr Pixel grey{100, 100, 100, 255};
constexpr Pixel white{255, 255, 255, 255};
constexpr Pixel clear{0, 0, 0, 0};

/// A picture of one colour. All rows but the last are padded with other pixels.
struct Picture {
    Picture(int columns, int rows, Pixel fill = grey)
        : width(columns),
          height(rows),
          pixels(static_cast<std::size_t>((columns + 3) * rows - 3), Pixel{9, 9, 9, 9}) {
        for (int row = 0; row < rows; ++row)
            std::fill_n(pixels.begin() + row * (columns + 3), columns, fill);
    }

    Picture& set(int column, int row, Pixel pixel) {
        pixels.at(static_cast<std::size_t>(row * (width + 3) + column)) = pixel;
        return *this;
    }

    operator Capture() const { // NOLINT(google-explicit-constructor)
        return {{pixels.data()->data(), pixels.size() * 4}, width, height, (width + 3) * 4};
    }

    int width, height;
    std::vector<Pixel> pixels;
};

TEST(ThumbnailCheck, OneColourIsBlank) {
    EXPECT_TRUE(isBlank(Picture(10, 10, {103, 97, 103, 255}).set(0, 0, grey)));
    for (const Pixel other : {Pixel{104, 100, 100, 255}, {100, 96, 100, 255}, {100, 100, 104, 1}})
        EXPECT_FALSE(isBlank(Picture(10, 10).set(9, 9, other)));
    // Transparent pixels are skipped, even the first one; alpha is not compared.
    EXPECT_TRUE(isBlank(Picture(10, 10).set(0, 0, clear).set(1, 0, {99, 99, 99, 1})));
    EXPECT_TRUE(isBlank(Picture(2, 2, clear)) && isBlankBody(Picture(2, 2, clear), 0));
    // A pixel is compared with the first one, not with its neighbour.
    EXPECT_FALSE(
        isBlank(Picture(3, 1).set(1, 0, {103, 100, 100, 9}).set(2, 0, {106, 100, 100, 9})));
}

TEST(ThumbnailCheck, LargeCapturesAreSampled) {
    const auto sees = [](int width, int height, int column, int row) {
        return !isBlank(Picture(width, height).set(column, row, white));
    };
    EXPECT_TRUE(sees(255, 1, 1, 0) && sees(256, 1, 2, 0) && !sees(256, 1, 1, 0));
    EXPECT_TRUE(sees(1, 255, 0, 254) && sees(1, 256, 0, 254) && !sees(1, 256, 0, 255));
    // The rows of a body are counted from below the title bar.
    EXPECT_FALSE(isBlankBody(Picture(1, 256).set(0, 2, white), 1));
}

TEST(ThumbnailCheck, WhatIsTooShortOrHasNoSizeIsNotCalledBlank) {
    const Picture picture(3, 3);
    const ByteView all = Capture(picture).bytes;
    const auto blank = [](ByteView bytes, std::int64_t width, std::int64_t height,
                          std::int64_t bytesPerRow) {
        const Capture capture{bytes, width, height, bytesPerRow};
        return isBlank(capture) || isBlankBody(capture, 0);
    };
    EXPECT_TRUE(blank(all, 3, 3, 24) && blank(all.first(12), 3, 1, 12));
    EXPECT_FALSE(blank(all.first(all.size() - 1), 3, 3, 24) || blank(all, 3, 3, 11)
                 || blank(all.first(11), 3, 1, 12));
    for (const std::int64_t odd : {std::int64_t{0}, most, most / 4, -most}) {
        EXPECT_FALSE(blank(all, odd, 3, 24) || blank(all, 3, odd, 24)) << odd;
        EXPECT_FALSE(blank(all, 3, 3, odd) || blank(all, odd, odd, odd)) << odd;
    }
}

TEST(ThumbnailCheck, ABodyIsBlankBelowItsTitleBarWhenPlainOrDark) {
    const Picture titled = Picture(2, 8).set(1, 1, white);
    EXPECT_TRUE(isBlankBody(titled, 2));
    for (const std::int64_t rows : {std::int64_t{1}, std::int64_t{-1}, std::int64_t{8}, most})
        EXPECT_FALSE(isBlankBody(titled, rows)) << rows;
    const auto isDark = [](Pixel brightest) {
        return isBlankBody(Picture(8, 8, {0, 0, 0, 255}).set(5, 5, brightest), 2);
    };
    EXPECT_TRUE(isDark({55, 55, 55, 255}) && !isDark({56, 56, 56, 255}));
    EXPECT_TRUE(isDark({255, 0, 0, 9}) && isDark({0, 0, 255, 9}));
    EXPECT_TRUE(isDark({0, 78, 0, 9}) && !isDark({0, 79, 0, 9}));
}

TEST(ThumbnailCheck, ATitleBarIsAQuarterOfTheCaptureAtMost) {
    using ThumbnailCheck::titleRows;
    EXPECT_EQ(titleRows(800, 400), 80);
    EXPECT_EQ(titleRows(401, 800), 21); // rounded up
    EXPECT_EQ(titleRows(403, 100), 100);
    EXPECT_EQ(titleRows(400, 1e-300), 100);
    EXPECT_EQ(titleRows(most, 80), most / 4);
    for (const double none : {0.0, -1.0, infinity, nan})
        EXPECT_EQ(titleRows(400, none), 0) << none;
    EXPECT_TRUE(titleRows(4, 4000) == 1 && titleRows(3, 9) == 0 && titleRows(-9, 400) == 0);
}

TEST(CaptureGate, TriesUntilTheWaitIsOverAndOnceMore) {
    /// Returns the times of the attempts, by a clock that advances only during a sleep.
    const auto tries = [](double freeAt, double wait, double poll) {
        double now = 0;
        std::vector<double> times;
        const bool got = CaptureGate::acquire(
            wait, poll, [&] { return now; }, [&](double seconds) { now += seconds; },
            [&] { return times.emplace_back(now) >= freeAt; });
        EXPECT_EQ(got, now >= freeAt);
        return times;
    };
    EXPECT_EQ(tries(0, -1, 1), (std::vector{0.0}));
    EXPECT_EQ(tries(2, 3, 1), (std::vector{0.0, 1.0, 2.0}));
    EXPECT_EQ(tries(9, 2, 1), (std::vector{0.0, 1.0, 2.0}));
    EXPECT_EQ(tries(4, 2.5, 2), (std::vector{0.0, 2.0, 4.0}));
    EXPECT_EQ(tries(9, nan, 1), (std::vector{0.0}));
    for (const char* folder : {"/tmp", "/tmp/"})
        EXPECT_EQ(CaptureGate::lockPath(folder), "/tmp/velmo-window-capture.lock");
}

} // namespace
} // namespace velmo
