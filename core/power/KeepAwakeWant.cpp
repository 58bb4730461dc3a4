#include "core/power/KeepAwakeWant.h"

namespace velmo {

std::optional<KeepAwakeWant> KeepAwakeWant::parse(std::string_view text) {
    const auto document = JsonDocument::parse(text);
    const auto object = document.and_then(&JsonDocument::object);
    if (!object)
        return std::nullopt;
    auto want = decodeRecordLeniently<KeepAwakeWant>(*object);
    want.batteryFloor = BatteryFloor(want.batteryFloor).percent();
    return want;
}

} // namespace velmo
