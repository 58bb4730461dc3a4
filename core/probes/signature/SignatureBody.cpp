#include "core/probes/signature/SignatureBody.h"

#include <algorithm>

namespace velmo {

namespace {

bool isInside(const SignatureBody::Point& point) {
    return point.size() == 2
           && std::ranges::all_of(point, [](double value) { return value >= 0 && value <= 1; });
}

bool obeysLimits(const std::vector<SignatureBody::Stroke>& strokes) {
    if (strokes.empty() || strokes.size() > SignatureBody::maxStrokes)
        return false;
    std::size_t points = 0;
    for (const SignatureBody::Stroke& stroke : strokes) {
        points += stroke.size();
        if (stroke.empty() || !std::ranges::all_of(stroke, isInside))
            return false;
    }
    return points <= SignatureBody::maxPoints;
}

} // namespace

std::optional<SignatureBody> SignatureBody::decode(ByteView data) {
    if (data.size() > maxBytes)
        return std::nullopt;
    auto body = decodeRecord<SignatureBody>(textOf(data));
    return body && obeysLimits(body->strokes) ? std::move(body) : std::nullopt;
}

} // namespace velmo
