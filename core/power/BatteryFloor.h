#pragma once

#include <algorithm>
#include <cstdint>

namespace velmo {

/// The battery percentage below which a hold on battery power ends. Whatever a client asks for is
/// brought within 10 to 95: no client may drain the battery further, or never hold at all.
class BatteryFloor {
public:
    static constexpr std::int64_t min = 10; ///< percent
    static constexpr std::int64_t max = 95; ///< percent

    constexpr BatteryFloor() = default;

    // Implicit: every number has its floor. NOLINTNEXTLINE(google-explicit-constructor)
    constexpr BatteryFloor(std::int64_t percent) : percent_(std::clamp(percent, min, max)) {}

    [[nodiscard]] constexpr std::int64_t percent() const { return percent_; }

    bool operator==(const BatteryFloor&) const = default;

private:
    std::int64_t percent_ = min;
};

} // namespace velmo
