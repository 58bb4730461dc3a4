#import <Foundation/Foundation.h>
#include <stdint.h>

/// The power daemon's service as any program on a Mac may call it: Objective-C imports this header,
/// Swift does so through a bridging header. `velmo::VelmoPowerProtocol` is the same for C++.
///
/// A host connects to the Mach service with the option `NSXPCConnectionPrivileged`, sets the code-
/// signing requirement that docs/formats/power-service.md gives, and asks the connection for a
/// proxy by `remoteObjectProxyWithErrorHandler:`. A call then ends either in its reply or in the
/// error handler, on the connection's own queue. Swift should therefore not await the replies: an
/// await never ends if the error handler is called.

#define VELMO_POWER_MACH_SERVICE "io.velmo.host.power"

NS_ASSUME_NONNULL_BEGIN

/// The selectors and types are what daemon and clients of different versions agree on.
@protocol VelmoPowerProtocol

/// Keeps the Mac awake until released, or until the battery falls below the floor on battery power.
/// The floor is a percentage, brought within 10 to 95. The reason is "" if ok, else a word for why
/// not.
- (void)holdWithBatteryFloor:(int64_t)batteryFloor
                       reply:(void (^)(BOOL ok, NSString* reason))reply
    NS_SWIFT_NAME(hold(batteryFloor:reply:));

/// Due within every 35 seconds. Not ok: this client does not have the hold, or no longer has it.
- (void)heartbeatWithReply:(void (^)(BOOL ok))reply NS_SWIFT_NAME(heartbeat(reply:));

/// Ends the current hold, whichever client has it. Not ok: sleep could not be enabled again yet.
- (void)releaseWithReply:(void (^)(BOOL ok))reply NS_SWIFT_NAME(release(reply:));

/// Tells about the holds: the line is a JSON object (docs/formats/power-service.md), or "" while
/// the daemon ends.
- (void)reportWithReply:(void (^)(NSString* line))reply NS_SWIFT_NAME(report(reply:));

@end

NS_ASSUME_NONNULL_END
