#include "phone/PhoneCommands.h"

namespace velmo {

namespace {

PhoneCommandReply list(const PhoneBridge& bridge) {
    std::vector<DeviceEntry> entries;
    for (const Device& device : bridge.devices())
        entries.push_back({.name = device.name, .rights = device.rights, .since = device.since});
    return {.ok = true, .devices = std::move(entries)};
}

PhoneCommandReply revoke(PhoneBridge& bridge, const std::optional<std::string>& name) {
    if (!name)
        bridge.revokeAll();
    else if (!bridge.revoke(*name))
        return {};
    return {.ok = true, .saved = bridge.isSaved()};
}

PhoneCommandReply replyTo(PhoneBridge& bridge, const PhoneCommandLine& line) {
    switch (line.command) {
    case PhoneCommand::admit:
        return {.ok = true, .address = bridge.admit(line.rights.value_or(DeviceRights::use))};
    case PhoneCommand::devices:
        return list(bridge);
    case PhoneCommand::revoke:
        break;
    }
    return revoke(bridge, line.name);
}

} // namespace

std::string obey(PhoneBridge& bridge, std::string_view line) {
    // A member that this version does not know could narrow the command.
    const auto command = decodeRecordExactly<PhoneCommandLine>(line, maxPhoneCommand);
    const auto reply = command ? replyTo(bridge, *command) : PhoneCommandReply();
    return encodeJson(reply, Slashes::plain).value_or("{\"ok\":false}") + "\n";
}

} // namespace velmo
