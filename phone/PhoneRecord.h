#pragma once

#include "core/support/Record.h"
#include "phone/DeviceBook.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// What the bridge keeps on disk from one run to the next.
struct PhoneRecord {
    std::uint16_t port = 0;             ///< 0 until a port has been chosen
    std::optional<std::string> outside; ///< the address from outside, as `PhoneAddress` reads it
    std::vector<Device> devices;

    static constexpr auto fields =
        std::tuple{field("port", &PhoneRecord::port), field("outside", &PhoneRecord::outside),
                   field("devices", &PhoneRecord::devices)};
    bool operator==(const PhoneRecord&) const = default;
};

} // namespace velmo
