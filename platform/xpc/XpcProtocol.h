#pragma once

#import <Foundation/Foundation.h>

#include <cstdint>

/// `velmo::VelmoPowerProtocol` as it goes over XPC. The selectors and types are what daemon and
/// clients of different versions agree on.
@protocol VelmoPowerProtocol

- (void)holdWithBatteryFloor:(std::int64_t)batteryFloor
                       reply:(void (^)(BOOL ok, NSString* reason))reply;
- (void)heartbeatWithReply:(void (^)(BOOL ok))reply;
- (void)releaseWithReply:(void (^)(BOOL ok))reply;
- (void)reportWithReply:(void (^)(NSString* line))reply;

@end

namespace velmo {

/// Returns the description of the protocol that a connection needs on both sides.
NSXPCInterface* powerInterface();

} // namespace velmo
