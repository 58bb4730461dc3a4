#pragma once

#include "core/support/Time.h"
#include "phone/DeviceRights.h"
#include "phone/SecretText.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// The codes that each let one device in. A code is 32 hexadecimal digits and exists in memory
/// alone.
class OneTimeCodes {
public:
    static constexpr double life = 120;          ///< seconds until a code expires
    static constexpr std::size_t maxCodes = 16;  ///< at a time; one more replaces the oldest
    static constexpr std::size_t codeBytes = 16; ///< random bytes of a code

    explicit OneTimeCodes(FillWithRandomBytes random) : random_(std::move(random)) {}

    /// Returns a new code, for a device with these rights.
    std::string issue(DeviceRights rights, SteadyTime now);

    /// Uses the code up and returns the rights of its device. Absent if the code is unknown, used
    /// or expired.
    std::optional<DeviceRights> take(std::string_view code, SteadyTime now);

private:
    struct Code {
        std::string text;
        DeviceRights rights;
        SteadyTime expiry;
    };

    FillWithRandomBytes random_;
    std::deque<Code> codes_; ///< oldest first
};

} // namespace velmo
