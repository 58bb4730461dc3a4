#pragma once

#include "daemon/Guard.h"
#include "platform/daemon/macos/XpcConnection.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <string_view>

/// Offers every connection of the listener to the guard.
@interface VelmoListenerDelegate : NSObject <NSXPCListenerDelegate>

- (instancetype)initWithGuard:(std::shared_ptr<velmo::Guard>)guard
                          log:(velmo::XpcConnection::Log)log;

@end

namespace velmo {

/// The Mach service whose name launchd keeps for this process. It serves as long as it lives.
class XpcService {
public:
    XpcService(std::string_view name, std::shared_ptr<Guard> guard, XpcConnection::Log log);

private:
    NSXPCListener* listener_;
    VelmoListenerDelegate* delegate_; ///< the listener itself does not keep it
};

} // namespace velmo
