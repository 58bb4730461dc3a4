#include "core/probes/signature/SignatureRenderer.h"

#include "core/probes/signature/InkPlane.h"
#include "core/support/BigEndian.h"
#include "lab/instruments/SampleSignatures.h"

#include <gmock/gmock.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmo {
namespace {

constexpr std::size_t width = SignatureRenderer::width;
constexpr std::size_t height = SignatureRenderer::height;

using Strokes = std::vector<SignatureBody::Stroke>;
using Pixel = std::array<std::uint8_t, 4>;
using Picture = std::vector<Pixel>;

constexpr Pixel none{};
constexpr Pixel black{24, 24, 27, 255};

Picture draw(const Strokes& strokes, bool blue = false) {
    const Bytes png = SignatureRenderer::png(strokes, blue).value();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size()));
    EXPECT_TRUE(image.width == width && image.height == height) << image.message;
    image.format = PNG_FORMAT_RGBA;
    Picture picture(std::max(width * height, std::size_t{image.width} * image.height));
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, picture.data(), 0, nullptr));
    return picture;
}

TEST(SignatureRenderer, WritesAnRgbaFileWithNothingButThePicture) {
    const Bytes png = SignatureRenderer::png({}, false).value();
    EXPECT_THAT(std::span(png).subspan(16, 10),
                testing::ElementsAre(0, 0, 6, 64, 0, 0, 2, 88, 8, 6));
    std::string chunks;
    for (ByteView rest = ByteView(png).subspan(8); !rest.empty();
         rest = rest.subspan(BigEndian::read(rest.first(4)) + 12))
        chunks.append(textOf(rest.subspan(4, 4))) += ' ';
    EXPECT_EQ(chunks, "IHDR sRGB IDAT IEND ");
}

TEST(SignatureRenderer, PutsEveryPointWhereThePenWas) {
    using Places = std::vector<std::pair<std::size_t, std::size_t>>;

    const struct {
        SignatureBody::Stroke stroke;
        Places inked; ///< fully
        Places blank;
    } cases[] = {
        // The drawing's lower left corner is the picture's; its upper edge is one pixel lower.
        {.stroke = {{0, 0}}, .inked = {{0, 0}, {0, 1}}, .blank = {{0, 3}, {2, 1}, {1, 3}}},
        {.stroke = {{1, 0}}, .inked = {{1598, 0}, {1599, 1}}, .blank = {{1596, 1}, {1599, 3}}},
        {.stroke = {{0, 1}}, .inked = {{0, 599}}, .blank = {{0, 597}, {2, 599}}},
        {.stroke = {{1, 1}}, .inked = {{1599, 599}, {1598, 599}}, .blank = {{1599, 597}}},
        // The part of a stroke outside the picture is cut off, but the part inside is drawn.
        {.stroke = {{-5, 0.5}, {6, 0.5}}, .inked = {{0, 300}, {1599, 300}}, .blank = {{0, 304}}},
        {.stroke = {{-1e308, -1e308}, {1e308, 1e308}}, .inked = {{0, 1}, {1598, 599}}},
        {.stroke = {{2, 2}}, .blank = {{1599, 599}, {0, 300}}},
    };

    for (const auto& [stroke, inked, blank] : cases) {
        SCOPED_TRACE(testing::PrintToString(stroke));
        const Picture picture = draw({stroke});
        for (const auto& [x, y] : inked)
            EXPECT_EQ(picture[y * width + x], black) << x << ',' << y;
        for (const auto& [x, y] : blank)
            EXPECT_EQ(picture[y * width + x], none) << x << ',' << y;
    }
}

TEST(SignatureRenderer, ColoursTheInkOfAllStrokes) {
    for (const auto& [name, make] : SampleSignatures::all) {
        const SignatureBody body = make();
        InkPlane plane(width, height);
        for (const SignatureBody::Stroke& stroke : body.strokes) {
            std::vector<PenPoint> points;
            for (const SignatureBody::Point& point : stroke)
                points.push_back({.x = 1599 * point[0], .y = 1 + 599 * point[1]});
            plane.draw(points);
        }
        const bool blue = body.color == SignatureBody::Color::blue;
        const Picture picture = draw(body.strokes, blue);
        for (std::size_t i = 0; i < picture.size(); ++i) {
            const std::uint8_t ink = plane.row(i / width)[i % width];
            const Pixel inked = blue ? Pixel{30, 64, 175, ink} : Pixel{24, 24, 27, ink};
            ASSERT_EQ(picture[i], ink == 0 ? none : inked) << name << ' ' << i;
        }
    }
}

TEST(SignatureRenderer, SkipsAStrokeWithAnyInvalidPoint) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(draw({{}, {{}}, {{0.5}}, {{nan, 0.5}}, {{0.5, infinity}, {0.1, 0.1, 0.1}}}),
              draw({}));
    for (const auto& odd : std::vector<SignatureBody::Point>{{nan, 0.1}, {0.1, infinity}})
        EXPECT_EQ(draw({{{0.1, 0.1}, odd, {0.9, 0.1}}, {{0.2, 0.5}}}), draw({{{0.2, 0.5}}}));
}

/// Returns the opacities of the pixels with x = 3, after one horizontal stroke at each height.
std::vector<int> column(std::initializer_list<double> heights) {
    InkPlane plane(8, 9);
    for (const double y : heights)
        plane.draw(std::array{PenPoint{.x = -9, .y = y}, PenPoint{.x = 20, .y = y}});
    std::vector<int> opacities;
    for (std::size_t y = 0; y < 9; ++y)
        opacities.push_back(plane.row(y)[3]);
    return opacities;
}

TEST(InkPlane, RoundsToTheNearestOpacity) {
    using testing::ElementsAre;
    // 2.5 less a distance of 1.75 is 0.75, which is 191.25 of 255; of 2.25 it is 63.75.
    EXPECT_THAT(column({4.25}), ElementsAre(0, 0, 191, 255, 255, 255, 64, 0, 0));
    EXPECT_THAT(column({4.75}), ElementsAre(0, 0, 64, 255, 255, 255, 191, 0, 0));
    EXPECT_THAT(column({4.5}), ElementsAre(0, 0, 128, 255, 255, 255, 128, 0, 0));
    // 64 * 191 / 255 is 47.94, which the later stroke hides, and 64 * 64 / 255 is 16.06.
    EXPECT_THAT(column({4.25, 4.75}), ElementsAre(0, 0, 207, 255, 255, 255, 207, 0, 0));
    EXPECT_THAT(column({4.75, 4.75}), ElementsAre(0, 0, 112, 255, 255, 255, 239, 0, 0));
}

double distance(const PenPoint& point, const PenPoint& from, const PenPoint& to) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double along = (point.x - from.x) * dx + (point.y - from.y) * dy;
    const double share = std::clamp(along / std::max(dx * dx + dy * dy, 1e-300), 0.0, 1.0);
    return std::hypot(point.x - from.x - share * dx, point.y - from.y - share * dy);
}

TEST(InkPlane, CoversPixelsByTheirDistanceFromTheStroke) {
    std::vector<PenPoint> places;
    for (const double x : {-4.0, 1.3, 5.0, 5.0 + 1e-12, 8.75, 17.0}) {
        for (const double y : {-5.0, 2.25, 4.1, 6.5, 11.0})
            places.push_back({.x = x, .y = y});
    }
    const PenPoint last{.x = 7, .y = 1.2};
    for (const PenPoint& first : places) {
        for (const PenPoint& second : places) {
            InkPlane plane(12, 9);
            plane.draw(std::array{first, second, last});
            for (std::size_t i = 0; i < std::size_t{12 * 9}; ++i) {
                const PenPoint centre{.x = static_cast<double>(i % 12) + 0.5,
                                      .y = static_cast<double>(i / 12) + 0.5};
                const double nearest =
                    std::min(distance(centre, first, second), distance(centre, second, last));
                const double share = std::clamp(2.5 - nearest, 0.0, 1.0);
                const int ink = plane.row(i / 12)[i % 12];
                ASSERT_NEAR(ink, 255 * share, 0.501) << first.x << ',' << first.y << ' ' << i;
                ASSERT_TRUE(ink == 0 || !plane.isBlank(i / 12)) << i;
            }
        }
    }
}

} // namespace
} // namespace velmo
