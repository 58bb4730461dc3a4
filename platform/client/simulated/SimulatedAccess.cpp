#include "platform/client/simulated/SimulatedAccess.h"

#include "core/power/PowerService.h"
#include "platform/client/DisplayOff.h"
#include "platform/client/simulated/SocketClient.h"
#include "platform/machine/simulated/SimulatedPowerMachine.h"
#include "platform/simulated/MacFolder.h"

#include <utility>

namespace velmo {

namespace {

class SocketLink final : public PowerLink {
public:
    SocketLink(asio::io_context& context, std::filesystem::path socket)
        : context_(context), socket_(std::move(socket)) {}

    std::shared_ptr<VelmoPowerProtocol> connect(std::function<void()> onLost) override {
        return SocketClient::connect(context_, socket_, std::move(onLost));
    }

private:
    asio::io_context& context_;
    std::filesystem::path socket_;
};

} // namespace

std::optional<PowerAccess> accessSimulatedMac(asio::io_context& context,
                                              const std::filesystem::path& folder) {
    const auto mac = MacFolder::named(folder);
    if (!mac || !mac->load())
        return std::nullopt;
    return PowerAccess{
        .machine = std::make_unique<SimulatedPowerMachine>(*mac),
        .link = std::make_unique<SocketLink>(context, mac->socket(powerDaemonMachService)),
        .preventIdleSleep = {}, // this Mac is never idle
        .turnDisplayOff = [pmset = mac->pmset().string()] { turnDisplayOffBy(pmset); }};
}

} // namespace velmo
