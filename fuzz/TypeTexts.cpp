#include "core/input/TypeTextRequest.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkTypeTexts(Input input) {
    const std::string_view json = input.rest();
    for (const TypeTextRequest& request : TypeTextRequest::ofText(json))
        require(TypeTextRequest::parse(encodeJson(request).value()) == request);
    requireSpellingIsIgnored(json, TypeTextRequest::parse, 8192);
    const auto request = TypeTextRequest::parse(json);
    if (!request)
        return;
    require(!request->text.empty() && Text::utf16Length(request->text) <= 500);
    for (const Text::Scalar& scalar : Text::Scalars(request->text))
        require(scalar.valid && scalar.value != 0x7F
                && (scalar.value >= 0x20 || scalar.value == '\t' || scalar.value == '\n'
                    || scalar.value == '\r'));
    require(TypeTextRequest::parse(encodeJson(*request).value()) == request);
}

const Target typeTextsTarget("TypeTexts", checkTypeTexts);

} // namespace

} // namespace velmo::Fuzz
