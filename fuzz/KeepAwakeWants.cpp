#include "core/power/KeepAwakeWant.h"
#include "core/power/PowerGuardPolicy.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkKeepAwakeWants(Input input) {
    const std::string_view text = input.rest();
    requireSpellingIsIgnored(text, KeepAwakeWant::parse);
    const auto want = KeepAwakeWant::parse(text);
    if (!want)
        return;
    require(want->batteryFloor == PowerGuardPolicy::clampFloor(want->batteryFloor));
    require(KeepAwakeWant::parse(encodeJson(*want).value()) == want);
}

const Target keepAwakeWantsTarget("KeepAwakeWants", checkKeepAwakeWants);

} // namespace

} // namespace velmo::Fuzz
