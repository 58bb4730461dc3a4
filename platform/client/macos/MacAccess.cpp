#include "core/power/PowerService.h"
#include "platform/client/DisplayOff.h"
#include "platform/client/PowerAccess.h"
#include "platform/client/macos/IdleAssertion.h"
#include "platform/client/macos/MacInstallation.h"
#include "platform/client/macos/XpcPowerClient.h"
#include "platform/machine/macos/MacPowerMachine.h"
#include "platform/xpc/SigningTeam.h"

#include <utility>

namespace velmo {

namespace {

class XpcPowerLink final : public PowerLink {
public:
    explicit XpcPowerLink(ClientContext context) : context_(std::move(context)) {}

    std::shared_ptr<VelmoPowerProtocol> connect(std::function<void(Loss)> onLost) override {
        const auto requirement = powerDaemonRequirement(currentSigningTeam());
        if (requirement)
            return connectToPowerDaemon(*requirement, context_,
                                        [onLost = std::move(onLost)] { onLost(Loss::ended); });
        context_.log("this copy is not signed by a team, so it can't tell whose daemon it would "
                     "reach");
        return nullptr;
    }

private:
    ClientContext context_;
};

} // namespace

std::optional<PowerAccess> accessThisMac(ClientContext context) {
    return PowerAccess{
        .machine = std::make_unique<MacPowerMachine>(),
        .link = std::make_unique<XpcPowerLink>(std::move(context)),
        .preventIdleSleep = preventIdleSleep,
        .turnDisplayOff = [] { turnDisplayOffBy(pmsetPath); },
        .examine = [] { return examineMac(powerDaemonRequirement(currentSigningTeam())); }};
}

} // namespace velmo
