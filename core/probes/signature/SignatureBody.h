#pragma once

#include "core/support/Bytes.h"
#include "core/support/Record.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace velmo {

/// Contains a signature as the phone sends it:
///
///     {"strokes":[[[0.1,0.5],[0.2,0.25]],[[0.3,0.5]]],"color":"blue"}
struct SignatureBody {
    enum class Color { black, blue };

    /// x and y, where 0, 0 is the upper left corner of the drawing and 1, 1 the lower right one.
    using Point = std::vector<double>;
    using Stroke = std::vector<Point>;

    static constexpr std::size_t maxBytes = 65'536;
    static constexpr std::size_t maxStrokes = 64;
    static constexpr std::size_t maxPoints = 2048; ///< of all strokes together

    std::vector<Stroke> strokes; ///< in the order of drawing
    Color color = Color::black;

    /// Reads a body of at most `maxBytes`. Returns nothing unless it is JSON of this form with 1 to
    /// `maxStrokes` strokes, none of them empty, at most `maxPoints` points, and exactly two
    /// numbers within 0...1 in each point. Members of other names are ignored.
    static std::optional<SignatureBody> decode(ByteView data);

    static constexpr auto fields = std::tuple{field("strokes", &SignatureBody::strokes),
                                              field("color", &SignatureBody::color)};
    bool operator==(const SignatureBody&) const = default;
};

template<>
inline constexpr auto rawTexts<SignatureBody::Color> =
    std::to_array<std::string_view>({"black", "blue"});

} // namespace velmo
