#include "lab/instruments/SampleSignatures.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace velmo::SampleSignatures {

namespace {

constexpr double turn = 2 * std::numbers::pi;

/// Returns `points` places of a curve, at equal steps of the time 0...1. Coordinates are rounded to
/// a ten-thousandth, as a phone rounds them.
template<class Curve>
SignatureBody::Stroke stroke(std::size_t points, const Curve& curve) {
    const auto rounded = [](double value) { return std::round(value * 10'000) / 10'000; };
    SignatureBody::Stroke result;
    for (std::size_t i = 0; i < points; ++i) {
        const auto [x, y] = curve(static_cast<double>(i) / static_cast<double>(points - 1));
        result.push_back({rounded(x), rounded(y)});
    }
    return result;
}

struct Place {
    double x;
    double y;
};

/// Draws loops that lean to the right and vary in height, as letters do.
Place letters(double time) {
    const double angle = 11 * turn * time;
    const double height = 0.1 + 0.12 * std::pow(std::sin(2.5 * turn * time + 0.6), 2);
    const double rise = height * std::sin(angle);
    return {.x = 0.06 + 0.84 * time + 0.018 * std::cos(angle) + 0.12 * rise,
            .y = 0.42 - rise + 0.05 * std::sin(turn * time)};
}

Place flourish(double time) {
    return {.x = 0.93 - 0.86 * time + 0.1 * std::sin(turn * time),
            .y = 0.8 + 0.07 * std::sin(1.5 * turn * time) - 0.1 * time};
}

constexpr std::size_t columns = 16;
constexpr std::size_t rows = SignatureBody::maxStrokes / columns;

/// Returns a spiral that fills one cell of a grid over the picture.
SignatureBody::Stroke spiral(std::size_t column, std::size_t row) {
    const Place centre{.x = (static_cast<double>(column) + 0.5) / columns,
                       .y = (static_cast<double>(row) + 0.5) / rows};
    return stroke(SignatureBody::maxPoints / SignatureBody::maxStrokes, [&](double time) -> Place {
        const double angle = 3 * turn * time + static_cast<double>(column);
        return {.x = centre.x + 0.03 * time * std::cos(angle),
                .y = centre.y + 0.12 * time * std::sin(angle)};
    });
}

} // namespace

SignatureBody cornerDots() {
    return {.strokes = {{{0, 0}}, {{1, 0}}, {{0, 1}}, {{1, 1}}},
            .color = SignatureBody::Color::black};
}

SignatureBody longSignature() {
    return {.strokes = {stroke(800, letters), stroke(120, flourish), {{0.2, 0.1}}, {{0.64, 0.12}}},
            .color = SignatureBody::Color::blue};
}

SignatureBody maxAllowed() {
    SignatureBody body{.strokes = {}, .color = SignatureBody::Color::blue};
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column)
            body.strokes.push_back(spiral(column, row));
    }
    return body;
}

} // namespace velmo::SampleSignatures
