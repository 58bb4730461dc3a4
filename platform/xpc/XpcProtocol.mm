#include "platform/xpc/XpcProtocol.h"

namespace velmo {

NSXPCInterface* powerInterface() {
    return [NSXPCInterface interfaceWithProtocol:@protocol(VelmoPowerProtocol)];
}

} // namespace velmo
