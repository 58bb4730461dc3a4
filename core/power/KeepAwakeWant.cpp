#include "core/power/KeepAwakeWant.h"

#include "core/power/PowerGuardPolicy.h"

namespace velmo {

std::optional<KeepAwakeWant> KeepAwakeWant::parse(std::string_view text) {
    const auto document = JsonDocument::parse(text);
    const auto object = document.and_then(&JsonDocument::object);
    if (!object)
        return std::nullopt;
    auto want = decodeRecordLeniently<KeepAwakeWant>(*object);
    want.batteryFloor = PowerGuardPolicy::clampFloor(want.batteryFloor);
    return want;
}

} // namespace velmo
