#pragma once

#include "core/power/BatteryFloor.h"
#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// A request to the host to keep the Mac awake.
struct KeepAwakeWant {
    bool system = false;    ///< the Mac does not sleep when it is idle
    bool display = false;   ///< nor does the display
    bool closedLid = false; ///< the Mac does not sleep when its lid is closed
    std::int64_t batteryFloor = BatteryFloor::min; ///< percent; `parse` clamps it to 10...95
    std::string why; ///< for people, in a list of what keeps the Mac awake

    /// Reads one JSON object. A member that is missing or of another kind keeps its default;
    /// other members are ignored. Absent for any other text.
    static std::optional<KeepAwakeWant> parse(std::string_view text);

    /// Tells whether the system must stay awake, as it must for a display or with a closed lid.
    [[nodiscard]] bool effectiveSystem() const { return system || display || closedLid; }

    static constexpr auto fields = std::tuple{
        field("system", &KeepAwakeWant::system), field("display", &KeepAwakeWant::display),
        field("closedLid", &KeepAwakeWant::closedLid),
        field("batteryFloor", &KeepAwakeWant::batteryFloor), field("why", &KeepAwakeWant::why)};
    bool operator==(const KeepAwakeWant&) const = default;
};

} // namespace velmo
