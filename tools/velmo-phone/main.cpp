/// velmo-phone: terminal sessions in a phone's browser.

#include "core/output/Output.h"
#include "core/support/Decimal.h"
#include "core/terminal/AttachLabels.h"
#include "phone/PhoneAddress.h"
#include "phone/PhoneCommands.h"
#include "platform/phone/CommandDoor.h"
#include "platform/phone/PhoneFolder.h"
#include "platform/posix/ProcessSetup.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-phone/BridgeCommand.h"
#include "tools/velmo-phone/PhoneCommandLine.h"
#include "tools/velmo-phone/PhoneExit.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace velmo;

constexpr std::string_view noBridge = "no velmo-phone serves; start one first";

std::optional<PhoneCommandReply> ask(const PhoneCommandLine& line) {
    const auto path = PhoneFolder::commandSocketPath();
    const auto text = encodeJson(line);
    const auto reply = path && text ? askBridge(*path, *text) : std::nullopt;
    return reply ? decodeRecord<PhoneCommandReply>(*reply) : std::nullopt;
}

int serve(const CommandLine::Line& line) {
    BridgeRequest request;
    if (const auto text = line.value("--port")) {
        const auto port = Decimal::parsePositive(*text, UINT16_MAX);
        if (!port)
            return phoneComplains("--port takes a number from 1 to 65535", PhoneExit::usage);
        request.port = static_cast<std::uint16_t>(*port);
    }
    if (line.has("--url") && line.has("--no-url"))
        return phoneComplains("--url and --no-url exclude each other", PhoneExit::usage);
    if (const auto url = line.value("--url")) {
        request.outside = PhoneAddress::outsideOrigin(*url);
        if (!request.outside)
            return phoneComplains("--url takes an address like https://NAME, without a path",
                                  PhoneExit::usage);
    } else if (line.has("--no-url")) {
        request.outside = "";
    }
    const char* const fromEnvironment = std::getenv("VELMO_MAC"); // NOLINT(concurrency-mt-unsafe)
    request.mac = line.value("--mac").value_or(fromEnvironment == nullptr ? "" : fromEnvironment);
    return serveBridge(request);
}

int admit(bool viewOnly) {
    const auto reply = ask({.command = PhoneCommand::admit,
                            .rights = viewOnly ? DeviceRights::view : DeviceRights::use});
    if (!reply || !reply->address)
        return phoneComplains(noBridge, PhoneExit::noBridge);
    return printAddress(*reply->address);
}

std::string dateText(double since) {
    const auto seconds = static_cast<std::time_t>(since);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    std::string text(32, '\0');
    text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &parts));
    return text;
}

int devices(bool json) {
    const auto reply = ask({.command = PhoneCommand::devices});
    if (!reply || !reply->devices)
        return phoneComplains(noBridge, PhoneExit::noBridge);
    if (json)
        return phonePrints(Output::jsonLine(*reply->devices).value_or("[]") + "\n");
    std::string lines;
    for (const DeviceEntry& device : *reply->devices) {
        const std::string_view rights =
            device.rights == DeviceRights::view ? ", may only view" : "";
        lines += PtyAttach::sanitizeLabel(device.name) + ", since " + dateText(device.since)
                 + std::string(rights) + "\n";
    }
    return phonePrints(lines);
}

int revoke(const CommandLine::Line& line) {
    if (line.words.empty() != line.has("--all"))
        return phoneComplains("revoke needs the name of a device, or --all", PhoneExit::usage);
    PhoneCommandLine command{.command = PhoneCommand::revoke};
    if (!line.words.empty())
        command.name = line.words.front();
    const auto reply = ask(command);
    if (!reply)
        return phoneComplains(noBridge, PhoneExit::noBridge);
    if (!reply->ok)
        return phoneComplains("no device has this name", PhoneExit::refused);
    if (reply->saved.value_or(true))
        return PhoneExit::success;
    return phoneComplains("the state folder can't be written to, and a bridge that is started anew "
                          "lets the device in again; repeat this once there is room",
                          PhoneExit::refused);
}

int run(const CommandLine::Line& line) {
    const std::string_view verb = line.verb->name;
    if (verb == PhoneVerb::admit)
        return admit(line.has("--view-only"));
    if (verb == PhoneVerb::devices)
        return devices(line.has("--json"));
    return verb == PhoneVerb::revoke ? revoke(line) : serve(line);
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto line = CommandLine::read(phoneCommandLine, arguments);
    if (!line)
        return phoneComplains(line.error().text, PhoneExit::usage);
    if (const auto page = CommandLine::ownPage(phoneCommandLine, *line))
        return phonePrints(*page);
    return run(*line);
}
