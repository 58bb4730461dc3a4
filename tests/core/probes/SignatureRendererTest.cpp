#include "core/probes/SignatureRenderer.h"

#include "core/probes/InkPlane.h"

#include "lab/instruments/SampleSignatures.h"
#include <cairo/cairo.h>
#include <gmock/gmock.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace velmo {
namespace {

constexpr std::size_t width = SignatureRenderer::width;
constexpr std::size_t height = SignatureRenderer::height;

using Strokes = std::vector<SignatureBody::Stroke>;
using Pixel = std::array<std::uint8_t, 4>;
using Picture = std::vector<Pixel>;

constexpr Pixel none{};
constexpr Pixel blue{30, 64, 175, 255};
constexpr Pixel black{24, 24, 27, 255};

Pixel at(const Picture& picture, std::size_t x, std::size_t y) {
    return picture[y * width + x];
}

Picture decoded(const Bytes& png) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    Picture picture(width * height);
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size()));
    image.format = PNG_FORMAT_RGBA;
    if (image.width != width || image.height != height
        || png_image_finish_read(&image, nullptr, picture.data(), 0, nullptr) == 0)
        ADD_FAILURE() << image.message << ' ' << image.width << 'x' << image.height;
    return picture;
}

Picture draw(const Strokes& strokes, bool inBlue = true) {
    const auto png = SignatureRenderer::png(strokes, inBlue);
    EXPECT_TRUE(png);
    return decoded(png.value_or(Bytes()));
}

TEST(SignatureRenderer, WritesAnRgbaFileWithNothingButThePicture) {
    const auto png = SignatureRenderer::png({}, false);
    ASSERT_TRUE(png);
    EXPECT_THAT(std::vector(png->begin() + 16, png->begin() + 26),
                testing::ElementsAre(0, 0, 6, 64, 0, 0, 2, 88, 8, 6));
    std::string chunks;
    for (std::size_t i = 8; i + 8 <= png->size();) {
        const std::size_t length = static_cast<std::size_t>((*png)[i + 2]) << 8U | (*png)[i + 3];
        chunks += std::string(textOf(*png).substr(i + 4, 4)) + ' ';
        i += length + 12;
    }
    EXPECT_EQ(chunks, "IHDR sRGB IDAT IEND ");
    EXPECT_THAT(decoded(*png), testing::Each(none));
}

TEST(SignatureRenderer, PutsEveryPointWhereThePenWas) {
    const struct {
        Strokes strokes;
        std::vector<std::pair<std::size_t, std::size_t>> inked; ///< fully
        std::vector<std::pair<std::size_t, std::size_t>> blank;
    } cases[] = {
        // The drawing's lower left corner is the picture's; its upper edge is one pixel lower.
        {{{{0, 0}}}, {{0, 0}, {0, 1}}, {{0, 3}, {2, 1}, {1, 3}}},
        {{{{1, 0}}}, {{1598, 0}, {1599, 1}}, {{1596, 1}, {1599, 3}}},
        {{{{0, 1}}}, {{0, 599}}, {{0, 597}, {2, 599}}},
        {{{{1, 1}}}, {{1599, 599}, {1598, 599}}, {{1599, 597}, {1596, 599}}},
        {{{{-0.0, 1e-320}}}, {{0, 0}, {0, 1}}, {{0, 3}}},
        // Round ends reach two pixels beyond; joins are not mitred.
        {{{{0.25, 0.5}, {0.75, 0.5}}},
         {{400, 299}, {400, 301}, {1198, 300}, {398, 300}},
         {{400, 297}, {400, 304}, {396, 300}, {1202, 300}}},
        {{{{0.25, 0.5}, {0.5, 0.5}, {0.25, 0.505}}}, {{799, 300}}, {{803, 301}, {804, 302}}},
        // What is outside is cut off, but not what of it reaches inside.
        {{{{-5, 0.5}, {6, 0.5}}}, {{0, 300}, {1599, 300}}, {{0, 304}}},
        {{{{-1e308, -1e308}, {1e308, 1e308}}}, {{0, 1}, {1598, 599}}, {{1599, 0}, {0, 599}}},
        {{{{2, 2}}, {{-1, 0.5}}}, {}, {{1599, 599}, {0, 300}}},
    };

    for (const auto& [strokes, inked, blank] : cases) {
        SCOPED_TRACE(testing::PrintToString(strokes));
        const Picture picture = draw(strokes, false);
        for (const auto& [x, y] : inked)
            EXPECT_EQ(at(picture, x, y), black) << x << ',' << y;
        for (const auto& [x, y] : blank)
            EXPECT_EQ(at(picture, x, y), none) << x << ',' << y;
    }
}

TEST(SignatureRenderer, InkHasOneColourAndIsDarkerOnlyWhereStrokesMeet) {
    const SignatureBody::Stroke line{{0.1, 0.1}, {0.9, 0.8}};
    const SignatureBody::Stroke across{{0.1, 0.8}, {0.9, 0.1}, {0.6, 0.5}};
    const Picture one = draw({line});
    EXPECT_EQ(one, draw({{{0.1, 0.1}, {0.9, 0.8}, {0.1, 0.1}, {0.1, 0.1}}}));

    for (const auto& second : {line, across}) {
        const Picture other = draw({second});
        const Picture both = draw({line, second});
        std::size_t shades = 0;
        for (std::size_t i = 0; i < both.size(); ++i) {
            const int expected = 255 - (255 - one[i][3]) * (255 - other[i][3]) / 255;
            ASSERT_NEAR(both[i][3], expected, 1) << i % width << ',' << i / width;
            ASSERT_TRUE(both[i] == none
                        || std::equal(blue.begin(), blue.begin() + 3, both[i].begin()))
                << testing::PrintToString(both[i]);
            shades += both[i][3] > 0 && both[i][3] < 255 ? 1 : 0;
        }
        EXPECT_GT(shades, 2000U);
    }
}

TEST(SignatureRenderer, ADotIsADotHoweverOftenItIsTouched) {
    const Picture dot = draw({{{0.3, 0.6}}});
    EXPECT_EQ(dot, draw({{{0.3, 0.6}, {0.3, 0.6}}}));
    EXPECT_EQ(dot, draw({{{0.3, 0.6}, {0.3, 0.6 + 1e-17}, {0.3, 0.6}}}));
    EXPECT_EQ(draw({{{0, 0}}}), draw({{{0, 0}, {1e-320, 1e-320}}}));
    InkPlane untouched(8, 8);
    InkPlane moved(8, 8); // by less than a direction can be computed from
    untouched.draw(std::array<PenPoint, 1>{});
    moved.draw(std::array<PenPoint, 2>{PenPoint{}, PenPoint{.x = 5e-324, .y = 5e-324}});
    EXPECT_THAT(moved.row(0), testing::ElementsAreArray(untouched.row(0)));

    unsigned ink = 0;
    for (const Pixel& pixel : dot)
        ink += pixel[3];
    EXPECT_NEAR(ink / 255.0, std::numbers::pi * 4, 0.4); // a disc of diameter 4
}

TEST(SignatureRenderer, LeavesOutWhatIsNoPoint) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(draw({{}, {{}}, {{0.5}}, {{nan, 0.5}}, {{0.5, infinity}, {0.1, 0.1, 0.1}}}),
              draw({}));
    EXPECT_EQ(draw({{{0.5, 0.5}, {0.5, infinity}, {0.5, nan}}}), draw({{{0.5, 0.5}}}));
    EXPECT_EQ(draw({{{0.1, 0.1}, {nan, 0}, {0.9, 0.1}, {-infinity, 0.5}}}),
              draw({{{0.1, 0.1}, {0.9, 0.1}}}));
}

/// How much of each pixel a 2D library inks with the same signature.
std::vector<std::uint8_t> coveredByCairo(const SignatureBody& body) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_A8, width, height), &cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()),
                                                                     &cairo_destroy);
    cairo_t* const cairo = context.get();
    cairo_set_antialias(cairo, CAIRO_ANTIALIAS_BEST);
    cairo_set_tolerance(cairo, 0.01);
    cairo_set_line_width(cairo, 4);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
    for (const SignatureBody::Stroke& stroke : body.strokes) {
        cairo_move_to(cairo, 1599 * stroke[0][0], 1 + 599 * stroke[0][1]);
        for (const SignatureBody::Point& point : stroke)
            cairo_line_to(cairo, 1599 * point[0], 1 + 599 * point[1]);
        cairo_stroke(cairo);
    }
    cairo_surface_flush(surface.get());
    // A row of 1600 bytes needs no padding.
    const std::uint8_t* const first = cairo_image_surface_get_data(surface.get());
    return {first, first + width * height};
}

/// They differ in shade at the edges: cairo measures how much of a pixel's area is covered, and
/// adds up where two edges of one stroke share a pixel; there, at crossings, are the largest
/// differences: 113, and at most 1.76 in the mean over the inked pixels.
TEST(SignatureRenderer, DrawsAsAnIndependentLibraryDoes) {
    constexpr int visible = 32;
    for (const auto& [name, make] : SampleSignatures::all) {
        const SignatureBody body = make();
        const Picture ours = draw(body.strokes);
        const auto theirs = coveredByCairo(body);
        int largest = 0;
        int sum = 0;
        int inked = 0;
        int far = 0;
        for (std::size_t i = 0; i < ours.size(); ++i) {
            const int difference = std::abs(ours[i][3] - theirs[i]);
            inked += ours[i][3] > 0 || theirs[i] > 0 ? 1 : 0;
            largest = std::max(largest, difference);
            sum += difference;
            far += difference > visible ? 1 : 0;
        }
        EXPECT_LE(largest, 116) << name;
        EXPECT_LE(sum, 1.8 * std::max(inked, 1000)) << name;
        EXPECT_LE(far, inked / 500) << name;
    }
}

} // namespace
} // namespace velmo
