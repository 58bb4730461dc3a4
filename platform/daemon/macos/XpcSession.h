#pragma once

#include "daemon/Session.h"
#include "platform/xpc/XpcProtocol.h"

#include <functional>
#include <memory>

/// The exported object of one connection, which hands every call on to the session. `onCalled` is
/// told of each first: the system lets no call through that fails the code-signing requirement.
@interface VelmoPowerSession : NSObject <VelmoPowerProtocol>

- (instancetype)initWithSession:(std::shared_ptr<velmo::Session>)session
                       onCalled:(std::function<void()>)onCalled;

@end
