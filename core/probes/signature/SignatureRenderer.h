#pragma once

#include "core/probes/signature/SignatureBody.h"
#include "core/support/Bytes.h"

#include <cstddef>
#include <optional>
#include <span>

/// Draws a signature as a picture that can be placed on a document.
namespace velmo::SignatureRenderer {

// Pixels.
inline constexpr std::size_t width = 1600;
inline constexpr std::size_t height = 600;

/// Returns a PNG file: 8-bit RGBA, not premultiplied, transparent except for the ink. Strokes are
/// drawn in order with a round pen of 4 pixels. A stroke of one point, or of several equal ones, is
/// drawn as a dot.
///
/// Any strokes may be passed, not only those that `SignatureBody::decode` accepts: a part outside
/// the picture is cut off, and a stroke with a point that is not two finite numbers is left out.
/// Absent only if memory runs out.
std::optional<Bytes> png(std::span<const SignatureBody::Stroke> strokes, bool blue);

} // namespace velmo::SignatureRenderer
