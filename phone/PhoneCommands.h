#pragma once

#include "core/support/Record.h"
#include "phone/DeviceRights.h"
#include "phone/PhoneBridge.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The lines on the bridge's socket for commands. The user's own processes send one command as a
/// line of JSON on a connection, and get one line back.
///
///     {"command":"admit","rights":"use"}   lets one device in: "address"
///     {"command":"devices"}                lists the devices: "devices"
///     {"command":"revoke","name":"phone"}  lets a device in no more; without a name, all devices
namespace velmo {

enum class PhoneCommand { admit, devices, revoke };

template<>
inline constexpr auto rawTexts<PhoneCommand> =
    std::to_array<std::string_view>({"admit", "devices", "revoke"});

struct PhoneCommandLine {
    PhoneCommand command = PhoneCommand::devices;
    std::optional<DeviceRights> rights; ///< of admit; absent: use
    std::optional<std::string> name;    ///< of revoke; absent: every device

    static constexpr auto fields = std::tuple{field("command", &PhoneCommandLine::command),
                                              field("rights", &PhoneCommandLine::rights),
                                              field("name", &PhoneCommandLine::name)};
    bool operator==(const PhoneCommandLine&) const = default;
};

/// What people learn of a device.
struct DeviceEntry {
    std::string name;
    DeviceRights rights = DeviceRights::view;
    double since = 0; ///< seconds since 1970

    static constexpr auto fields =
        std::tuple{field("name", &DeviceEntry::name), field("rights", &DeviceEntry::rights),
                   field("since", &DeviceEntry::since)};
    bool operator==(const DeviceEntry&) const = default;
};

struct PhoneCommandReply {
    bool ok = false; ///< false: not a command, or no device has the name
    std::optional<std::string> address;
    std::optional<std::vector<DeviceEntry>> devices;
    std::optional<bool> saved; ///< of revoke: whether a bridge that is started anew knows of it

    static constexpr auto fields = std::tuple{
        field("ok", &PhoneCommandReply::ok), field("address", &PhoneCommandReply::address),
        field("devices", &PhoneCommandReply::devices), field("saved", &PhoneCommandReply::saved)};
    bool operator==(const PhoneCommandReply&) const = default;
};

/// The longest line of either side in bytes, line feed included.
inline constexpr std::size_t maxPhoneCommand = 65536;

/// Does what a line asks for and returns the reply as a line, with its line feed.
std::string obey(PhoneBridge& bridge, std::string_view line);

} // namespace velmo
