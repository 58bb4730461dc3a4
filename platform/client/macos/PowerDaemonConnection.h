#pragma once

#include "platform/client/macos/XpcPowerClient.h"

#import <Foundation/Foundation.h>

namespace velmo {

/// Does what `connectToPowerDaemon` does, over a connection that is handed in and not yet resumed.
std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemonOver(NSXPCConnection* connection,
                                                             const std::string& requirement,
                                                             ClientContext context,
                                                             std::function<void()> onLost);

} // namespace velmo
