#include "core/probes/signature/SignatureBody.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

void checkSignatureBodies(Input input) {
    const std::string_view json = input.rest();
    const auto decode = [](std::string_view text) { return SignatureBody::decode(bytesOf(text)); };
    requireSpellingIsIgnored(json, decode, SignatureBody::maxBytes);
    const auto body = decode(json);
    if (!body)
        return;
    std::size_t points = 0;
    for (const SignatureBody::Stroke& stroke : body->strokes) {
        points += stroke.size();
        require(!stroke.empty());
        for (const SignatureBody::Point& point : stroke)
            require(point.size() == 2 && std::ranges::min(point) >= 0
                    && std::ranges::max(point) <= 1);
    }
    require(!body->strokes.empty() && body->strokes.size() <= SignatureBody::maxStrokes);
    require(points <= SignatureBody::maxPoints);
    const std::string written = encodeJson(*body).value();
    require(written.size() > SignatureBody::maxBytes || decode(written) == body);
}

const Target signatureBodiesTarget("SignatureBodies", checkSignatureBodies);

} // namespace

} // namespace velmo::Fuzz
