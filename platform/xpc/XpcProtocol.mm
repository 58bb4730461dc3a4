#include "platform/xpc/XpcProtocol.h"

#include "core/power/PowerService.h"

namespace velmo {

static_assert(powerDaemonMachService == VELMO_POWER_MACH_SERVICE);

NSXPCInterface* powerInterface() {
    return [NSXPCInterface interfaceWithProtocol:@protocol(VelmoPowerProtocol)];
}

} // namespace velmo
