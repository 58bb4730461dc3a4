#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkLabels(Input input) {
    using namespace PtyAttach;
    const std::string code(input.line());
    const std::string text(input.rest());
    const std::string label = sanitizeLabel(text);
    const std::string title = sanitizeTitle(text);
    for (const Text::Scalar& scalar : Text::Scalars(label))
        require(scalar.valid && !Text::isControl(scalar.value)
                && (scalar.value < 0x202A || scalar.value > 0x202E));
    require(!Text::hasMoreCharactersThan(label, maxLabel));
    require(!Text::hasMoreCharactersThan(title, maxTitle) && label.starts_with(title));
    require(sanitizeLabel(label) == label && sanitizeTitle(title) == title);
    require(titleSequence(text) == "\033]2;" + title + "\007");
    require(fill(text, "{code}") == text);
    require(fill("{code}, {code}.", code) == code + ", " + code + ".");
}

const Target labelsTarget("Labels", checkLabels);

} // namespace

} // namespace velmo::Fuzz
