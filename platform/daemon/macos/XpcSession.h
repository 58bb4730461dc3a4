#pragma once

#include "core/power/VelmoPowerProtocol.h"
#include "platform/xpc/XpcProtocol.h"

#include <functional>
#include <memory>

/// The exported object of one connection, which hands every call on to the session. `onCalled` is
/// told of each first: the system lets no call through that fails the code-signing requirement.
@interface VelmoPowerSession : NSObject <VelmoPowerProtocol>

- (instancetype)initWithSession:(std::shared_ptr<velmo::VelmoPowerProtocol>)session
                       onCalled:(std::function<void()>)onCalled;

@end
