#pragma once

#include "core/probes/SignatureBody.h"
#include "core/support/Bytes.h"

#include <cstddef>
#include <optional>
#include <span>

/// Draws a signature as a picture that can be placed on a document.
namespace velmo::SignatureRenderer {

// Pixels.
inline constexpr std::size_t width = 1600;
inline constexpr std::size_t height = 600;

/// A PNG file: 8-bit RGBA, not premultiplied, transparent but for the ink. Strokes are drawn in
/// order with a round pen of 4 pixels; one point, or points that are all the same, is a dot.
///
/// Any strokes will do, not only those that `SignatureBody::decode` lets pass: what lies outside
/// the picture is cut off, a point that is not two finite numbers is left out. Absent only when
/// memory runs out.
std::optional<Bytes> png(std::span<const SignatureBody::Stroke> strokes, bool blue);

} // namespace velmo::SignatureRenderer
