#pragma once

#include "daemon/Guard.h"
#include "platform/daemon/macos/XpcConnection.h"

#import <Foundation/Foundation.h>

#include <memory>

/// Offers every connection of the listener to the guard.
@interface VelmoListenerDelegate : NSObject <NSXPCListenerDelegate>

- (instancetype)initWithGuard:(std::shared_ptr<velmo::Guard>)guard
                          log:(velmo::XpcConnection::Log)log;

@end

namespace velmo {

/// Serves the guard's clients on a listener, as long as this object lives.
class XpcService {
public:
    XpcService(NSXPCListener* listener, std::shared_ptr<Guard> guard, XpcConnection::Log log);

private:
    NSXPCListener* listener_;
    VelmoListenerDelegate* delegate_; ///< the listener itself does not keep it
};

} // namespace velmo
