#pragma once

#include "core/support/Record.h"
#include "core/support/Time.h"
#include "phone/DeviceRights.h"
#include "phone/SecretText.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A browser that was let in.
struct Device {
    std::string name;   ///< unique in the book
    std::string secret; ///< the SHA-256 of its cookie, in hexadecimal digits
    DeviceRights rights = DeviceRights::view;
    double since = 0; ///< when the device was let in, in seconds since 1970

    static constexpr auto fields =
        std::tuple{field("name", &Device::name), field("secret", &Device::secret),
                   field("rights", &Device::rights), field("since", &Device::since)};
    bool operator==(const Device&) const = default;
};

/// The devices that may come back. A device shows the cookie that it was given; the book contains
/// the cookie's hash alone, so that a copy of the book lets no browser in.
class DeviceBook {
public:
    static constexpr double life = 30.0 * 24 * 3600;     ///< seconds that a cookie is good for
    static constexpr std::size_t maxDevices = 64;        ///< one more replaces the oldest
    static constexpr std::size_t maxName = 40;           ///< user-perceived characters
    static constexpr std::size_t cookieBytes = 32;       ///< random bytes of a cookie
    static constexpr std::string_view unnamed = "phone"; ///< for a device that gives no name

    struct Services {
        FillWithRandomBytes random;
        Sha256 hash;
    };

    /// Takes over the devices of an earlier run.
    DeviceBook(Services services, std::vector<Device> devices);

    /// Lets a device in and returns its cookie. The name is cleaned and cut, and gets a number if
    /// another device has it.
    std::string add(std::string_view name, DeviceRights rights, WallTime now);

    /// Returns the device that the cookie belongs to; absent if the cookie is unknown or expired.
    /// The view lives until the book changes.
    [[nodiscard]] const Device* find(std::string_view cookie, WallTime now) const;

    /// Removes the device. Returns false if the book has no device of this name.
    bool remove(std::string_view name);

    void clear() { devices_.clear(); }

    /// Returns the devices that still have a good cookie, oldest first.
    [[nodiscard]] std::vector<Device> devices(WallTime now) const;

private:
    [[nodiscard]] bool has(std::string_view name) const;

    Services services_;
    std::vector<Device> devices_; ///< oldest first
};

} // namespace velmo
