#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// What a client asks to be kept awake.
struct KeepAwakeWant {
    bool system = false;
    bool display = false;
    bool closedLid = false;
    std::int64_t batteryFloor = 10; ///< percent; `parse` clamps it to 10...95
    std::string why;                ///< for people, in a list of what keeps the machine awake

    /// Reads a JSON object, which only JSON's own white space may precede. A member that is missing
    /// or of the wrong kind falls back to its default; unknown ones are ignored. Absent for
    /// anything but one whole object.
    static std::optional<KeepAwakeWant> parse(std::string_view text);

    /// A display or a closed lid can't be kept awake without the system.
    [[nodiscard]] bool effectiveSystem() const { return system || display || closedLid; }

    static constexpr auto fields = std::tuple{
        field("system", &KeepAwakeWant::system), field("display", &KeepAwakeWant::display),
        field("closedLid", &KeepAwakeWant::closedLid),
        field("batteryFloor", &KeepAwakeWant::batteryFloor), field("why", &KeepAwakeWant::why)};
    bool operator==(const KeepAwakeWant&) const = default;
};

} // namespace velmo
