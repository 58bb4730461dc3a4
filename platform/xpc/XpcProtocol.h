#pragma once

#import "platform/xpc/ObjcPowerProtocol.h"

namespace velmo {

/// Returns the description of the protocol that a connection needs on both sides.
NSXPCInterface* powerInterface();

} // namespace velmo
