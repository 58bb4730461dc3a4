#include "core/input/MouseClickRequest.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkMouseClicks(Input input) {
    const std::string_view json = input.rest();
    const auto request = MouseClickRequest::parse(json);
    requireSpellingIsIgnored(json, MouseClickRequest::parse, 256);
    if (!request)
        return;
    require(request->count == 1 || request->count == 2);
    require(MouseClickRequest::parse(encodeJson(*request).value()) == request);
    require(request->steps().size() == static_cast<std::size_t>(2 * request->count));
}

const Target mouseClicksTarget("MouseClicks", checkMouseClicks);

} // namespace

} // namespace velmo::Fuzz
