#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>

/// The lines in which the host reports power and the closed lid to the phone.
namespace velmo {

struct KeepAwakePowerLine {
    std::optional<bool> ac;         ///< on mains power; absent if the power source is unknown
    std::optional<int> battery;     ///< percent; absent without a battery
    std::string thermal;            ///< a `thermalName`
    std::optional<std::string> lid; ///< as in `KeepAwakeLidLine`; absent if not stated

    static constexpr auto fields = std::tuple{
        constant("type", "power"), field("ac", &KeepAwakePowerLine::ac),
        field("battery", &KeepAwakePowerLine::battery),
        field("thermal", &KeepAwakePowerLine::thermal), field("lid", &KeepAwakePowerLine::lid)};
    bool operator==(const KeepAwakePowerLine&) const = default;
};

struct KeepAwakeLidLine {
    std::string state;                 ///< the closed-lid state, in the host's own words
    std::optional<std::string> reason; ///< why it is in that state; absent if not stated

    static constexpr auto fields =
        std::tuple{constant("type", "closed-lid"), field("state", &KeepAwakeLidLine::state),
                   field("reason", &KeepAwakeLidLine::reason)};
    bool operator==(const KeepAwakeLidLine&) const = default;
};

} // namespace velmo
