#include "platform/daemon/macos/XpcSession.h"

#include "platform/macos/NSStringText.h"

#include <string_view>
#include <utility>

@implementation VelmoPowerSession {
    std::shared_ptr<velmo::VelmoPowerProtocol> _exported;
    std::function<void()> _onCalled;
}

- (instancetype)initWithSession:(std::shared_ptr<velmo::VelmoPowerProtocol>)session
                       onCalled:(std::function<void()>)onCalled {
    self = [super init];
    if (self) {
        _exported = std::move(session);
        _onCalled = std::move(onCalled);
    }
    return self;
}

/// Returns the session for a call that has come in.
- (velmo::VelmoPowerProtocol&)called {
    _onCalled();
    return *_exported;
}

- (void)holdWithBatteryFloor:(std::int64_t)batteryFloor
                       reply:(void (^)(BOOL ok, NSString* reason))reply {
    [self called].hold(batteryFloor, [reply](bool ok, std::string_view reason) {
        reply(ok, velmo::stringFrom(reason));
    });
}

- (void)heartbeatWithReply:(void (^)(BOOL ok))reply {
    [self called].heartbeat([reply](bool ok) { reply(ok); });
}

- (void)releaseWithReply:(void (^)(BOOL ok))reply {
    [self called].release([reply](bool ok) { reply(ok); });
}

- (void)reportWithReply:(void (^)(NSString* line))reply {
    [self called].report([reply](const std::optional<velmo::HoldReport>& report) {
        reply(velmo::stringFrom(report ? velmo::encodeJson(*report).value_or("") : ""));
    });
}

@end
