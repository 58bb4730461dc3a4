#include "core/power/SleepSetting.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

/// The first line with the setting decides: lines before it and after it change nothing.
void checkPmsetTexts(Input input) {
    const std::string text(input.rest());
    const auto disabled = parseSleepDisabled(text);
    require(parseSleepDisabled("SleepDisabled\nsleep 1\n\t" + text) == disabled);
    require(parseSleepDisabled(text + "\n SleepDisabled\t1") == disabled.value_or(true));
    require(parseSleepDisabled(text + "\n SleepDisabled\t0") == disabled.value_or(false));
}

const Target pmsetTextsTarget("PmsetTexts", checkPmsetTexts);

} // namespace

} // namespace velmo::Fuzz
