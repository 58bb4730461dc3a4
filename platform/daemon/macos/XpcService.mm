#include "platform/daemon/macos/XpcService.h"

#include "daemon/ConnectionPlaces.h"
#include "daemon/Session.h"

#include <atomic>
#include <cstdint>
#include <utility>

@implementation VelmoListenerDelegate {
    std::shared_ptr<velmo::Guard> _guard;
    velmo::XpcConnection::Log _log;
    std::shared_ptr<velmo::ConnectionPlaces> _places;
    std::atomic<std::uint64_t> _lastClient;
}

- (instancetype)initWithGuard:(std::shared_ptr<velmo::Guard>)guard
                          log:(velmo::XpcConnection::Log)log {
    self = [super init];
    if (self) {
        _guard = std::move(guard);
        _log = std::move(log);
        _places = std::make_shared<velmo::ConnectionPlaces>();
    }
    return self;
}

- (BOOL)listener:(NSXPCListener*)listener
    shouldAcceptNewConnection:(NSXPCConnection*)newConnection {
    // The system's threads empty their own pools only when they are idle.
    @autoreleasepool {
        const velmo::ClientId client{++_lastClient};
        const velmo::UserId user{newConnection.effectiveUserIdentifier};
        const auto connection = velmo::XpcConnection::of(newConnection, client, _log, _places);
        const auto drop = [weak = std::weak_ptr(connection)] {
            if (const auto alive = weak.lock())
                alive->invalidate();
        };
        if (!_places->take(client, user, drop)) {
            _log("a user has too many connections: refusing one");
            return NO;
        }
        if (_guard->acceptConnection(connection, velmo::Session::make))
            return YES;
        _places->leave(client);
        return NO;
    }
}

@end

namespace velmo {

XpcService::XpcService(NSXPCListener* listener, std::shared_ptr<Guard> guard,
                       XpcConnection::Log log)
    : listener_(listener),
      delegate_([[VelmoListenerDelegate alloc] initWithGuard:std::move(guard) log:std::move(log)]) {
    listener_.delegate = delegate_;
    [listener_ resume];
}

} // namespace velmo
