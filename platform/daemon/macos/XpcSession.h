#pragma once

#include "daemon/Session.h"
#include "platform/xpc/XpcProtocol.h"

#include <memory>

/// The exported object of one connection, which hands every call on to the session.
@interface VelmoPowerSession : NSObject <VelmoPowerProtocol>

- (instancetype)initWithSession:(std::shared_ptr<velmo::Session>)session;

@end
