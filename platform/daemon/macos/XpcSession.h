#pragma once

#include "core/power/VelmoPowerProtocol.h"
#include "platform/xpc/XpcProtocol.h"

#include <functional>
#include <memory>

/// The exported object of one connection, which passes every call on to the session. `onCalled` is
/// called before every call. A call proves that the client satisfies the code-signing requirement,
/// because the system drops the calls of any other.
@interface VelmoPowerSession : NSObject <VelmoPowerProtocol>

- (instancetype)initWithSession:(std::shared_ptr<velmo::VelmoPowerProtocol>)session
                       onCalled:(std::function<void()>)onCalled;

@end
