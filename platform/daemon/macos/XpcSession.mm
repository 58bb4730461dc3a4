#include "platform/daemon/macos/XpcSession.h"

#include "platform/macos/NSStringText.h"

#include <string_view>
#include <utility>

@implementation VelmoPowerSession {
    std::shared_ptr<velmo::Session> _session;
}

- (instancetype)initWithSession:(std::shared_ptr<velmo::Session>)session {
    self = [super init];
    if (self)
        _session = std::move(session);
    return self;
}

- (void)holdWithBatteryFloor:(std::int64_t)batteryFloor
                       reply:(void (^)(BOOL ok, NSString* reason))reply {
    _session->hold(batteryFloor, [reply](bool ok, std::string_view reason) {
        reply(ok, velmo::stringFrom(reason));
    });
}

- (void)heartbeatWithReply:(void (^)(BOOL ok))reply {
    _session->heartbeat([reply](bool ok) { reply(ok); });
}

- (void)releaseWithReply:(void (^)(BOOL ok))reply {
    _session->release([reply](bool ok) { reply(ok); });
}

- (void)reportWithReply:(void (^)(NSString* line))reply {
    _session->report([reply](std::string_view line) { reply(velmo::stringFrom(line)); });
}

@end
