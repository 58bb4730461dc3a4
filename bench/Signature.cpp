#include "bench/Suite.h"
#include "core/probes/signature/SignatureRenderer.h"
#include "lab/instruments/SampleSignatures.h"

#include <cairo/cairo.h>

#include <memory>
#include <string>

namespace velmo::bench {

namespace {

constexpr int width = SignatureRenderer::width;   ///< pixels
constexpr int height = SignatureRenderer::height; ///< pixels

cairo_status_t append(void* target, const unsigned char* data, unsigned length) {
    auto& bytes = *static_cast<Bytes*>(target);
    bytes.insert(bytes.end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
}

/// Draws the same picture with cairo, which writes it with libpng, both in their default settings.
Bytes withCairo(const SignatureBody& body) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height), &cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo(cairo_create(surface.get()),
                                                                   &cairo_destroy);
    cairo_set_source_rgb(cairo.get(), 30 / 255.0, 64 / 255.0, 175 / 255.0);
    cairo_set_line_width(cairo.get(), 4);
    cairo_set_line_cap(cairo.get(), CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo.get(), CAIRO_LINE_JOIN_ROUND);
    for (const SignatureBody::Stroke& stroke : body.strokes) {
        cairo_move_to(cairo.get(), (width - 1) * stroke[0][0], 1 + (height - 1) * stroke[0][1]);
        for (const SignatureBody::Point& point : stroke)
            cairo_line_to(cairo.get(), (width - 1) * point[0], 1 + (height - 1) * point[1]);
        cairo_stroke(cairo.get());
    }
    Bytes png;
    cairo_surface_write_to_png_stream(surface.get(), append, &png);
    return png;
}

Bytes withOurs(const SignatureBody& body) {
    return SignatureRenderer::png(body.strokes, true).value();
}

} // namespace

void addSignature(Suite& suite) {
    for (const auto& [name, make] : SampleSignatures::all) {
        const auto body = std::make_shared<const SignatureBody>(make());
        suite.compare({.what = "SignatureRenderer::png, " + std::string(name),
                       .input = std::to_string(body->strokes.size()) + " strokes",
                       .aims = {{.contender = "cairo", .factor = 4}}},
                      {{ours,
                        [=](benchmark::State& state) {
                            if (withOurs(*body).size() > withCairo(*body).size())
                                state.SkipWithError("our file is the larger one");
                            for (auto _ : state)
                                use(withOurs(*body));
                        }},
                       {"cairo", [=](benchmark::State& state) {
                            for (auto _ : state)
                                use(withCairo(*body));
                        }}});
    }
}

} // namespace velmo::bench
