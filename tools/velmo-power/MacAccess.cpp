#include "core/power/PowerService.h"
#include "platform/macos/MacPowerMachine.h"
#include "platform/macos/SigningTeam.h"
#include "platform/macos/XpcPowerClient.h"
#include "platform/posix/Io.h"
#include "tools/velmo-power/PowerAccess.h"

#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>

#include <utility>

namespace velmo {

namespace {

class XpcPowerLink final : public PowerLink {
public:
    explicit XpcPowerLink(asio::io_context& context) : context_(context) {}

    std::shared_ptr<VelmoPowerProtocol> connect(std::function<void()> onLost) override {
        const auto requirement = powerDaemonRequirement(currentSigningTeam());
        if (!requirement) {
            log("this copy is not signed by a team, so it can't tell whose daemon it would reach");
            return nullptr;
        }
        // The context has nothing to wait for while XPC works, and must not run out of work.
        const auto post = [work = asio::make_work_guard(context_)](std::function<void()> piece) {
            asio::post(work.get_executor(), std::move(piece));
        };
        return connectToPowerDaemon(*requirement, {.post = post, .log = log}, std::move(onLost));
    }

private:
    static void log(std::string_view message) {
        writeStandardError("velmo-power: " + std::string(message) + "\n");
    }

    asio::io_context& context_;
};

} // namespace

std::optional<PowerAccess> accessThisMac(asio::io_context& context) {
    return PowerAccess{.machine = std::make_unique<MacPowerMachine>(),
                       .link = std::make_unique<XpcPowerLink>(context)};
}

} // namespace velmo
