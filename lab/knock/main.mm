/// knock: makes one call to this Mac's power daemon as a client that no team has signed, and prints
/// the outcome. Exit status 0 means that the daemon has answered, which it must not do.

#include "core/power/PowerService.h"
#include "platform/macos/NSStringText.h"
#include "platform/xpc/XpcProtocol.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>

int main() {
    using namespace velmo;
    constexpr std::chrono::seconds patience(30);
    const auto answered = std::make_shared<std::promise<bool>>();
    auto outcome = answered->get_future();
    @autoreleasepool {
        NSXPCConnection* const connection =
            [[NSXPCConnection alloc] initWithMachServiceName:stringFrom(powerDaemonMachService)
                                                     options:NSXPCConnectionPrivileged];
        connection.remoteObjectInterface = powerInterface();
        [connection resume];
        const id<VelmoPowerProtocol> daemon =
            [connection remoteObjectProxyWithErrorHandler:^(NSError* /*error*/) {
              answered->set_value(false);
            }];
        [daemon heartbeatWithReply:^(BOOL /*holds*/) {
          answered->set_value(true);
        }];
        const bool decided = outcome.wait_for(patience) == std::future_status::ready;
        const bool served = decided && outcome.get();
        std::puts(served ? "answered" : decided ? "refused" : "no reply");
        [connection invalidate];
        return served ? EXIT_SUCCESS : EXIT_FAILURE;
    }
}
