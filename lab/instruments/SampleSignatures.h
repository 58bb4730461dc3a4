#pragma once

#include "core/probes/signature/SignatureBody.h"

#include <array>
#include <string_view>

/// Provides signatures with which the renderer is tested and measured.
namespace velmo::SampleSignatures {

SignatureBody cornerDots();    ///< a dot in each corner
SignatureBody longSignature(); ///< like handwriting, across the whole width
SignatureBody maxAllowed();    ///< as many strokes and points as a body may have

/// A signature and the name of its picture.
struct Named {
    std::string_view name;
    SignatureBody (*make)();
};

inline constexpr auto all = std::to_array<Named>({{.name = "corner-dots", .make = cornerDots},
                                                  {.name = "long-signature", .make = longSignature},
                                                  {.name = "most-allowed", .make = maxAllowed}});

} // namespace velmo::SampleSignatures
