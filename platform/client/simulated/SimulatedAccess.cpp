#include "platform/client/simulated/SimulatedAccess.h"

#include "core/power/PowerService.h"
#include "platform/client/DisplayOff.h"
#include "platform/client/PlaceOnDisk.h"
#include "platform/client/simulated/SocketClient.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/simulated/MacFolder.h"

#include <unistd.h>

#include <system_error>
#include <utility>

namespace velmo {

namespace {

class SocketLink final : public PowerLink {
public:
    SocketLink(asio::io_context& context, std::filesystem::path socket)
        : context_(context), socket_(std::move(socket)) {}

    std::shared_ptr<VelmoPowerProtocol> connect(std::function<void(Loss)> onLost) override {
        return SocketClient::connect(context_, socket_, std::move(onLost));
    }

private:
    asio::io_context& context_;
    std::filesystem::path socket_;
};

/// Leaves out what a simulated Mac lacks: launchd, code signatures and a log file. The daemon there
/// logs to its standard error.
Installation examine(const MacFolder& mac) {
    const auto folder = mac.inside(powerRecordDirectory);
    return {.simulatedMac = mac.root().string(),
            .recordFolder = placeOnDisk(folder.string(), ::geteuid()),
            .hasRecord = isOnDisk((folder / powerRecordName).string())};
}

} // namespace

std::expected<PowerAccess, std::string> accessSimulatedMac(asio::io_context& context,
                                                           const std::filesystem::path& folder) {
    const auto mac = MacFolder::named(folder);
    if (!mac)
        return std::unexpected(mac.error());
    if (!mac->load())
        return std::unexpected(mac->complaint());
    return PowerAccess{
        .machine = std::make_unique<SimulatedPowerMachine>(*mac),
        .link = std::make_unique<SocketLink>(context, mac->socket(powerDaemonMachService)),
        .preventIdleSleep = {}, // this Mac is never idle
        .turnDisplayOff = [pmset = mac->pmset().string()] { turnDisplayOffBy(pmset); },
        .examine = [mac = *mac] { return examine(mac); }};
}

} // namespace velmo
