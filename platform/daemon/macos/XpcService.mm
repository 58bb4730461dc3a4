#include "platform/daemon/macos/XpcService.h"

#include "platform/macos/NSStringText.h"

#include <atomic>
#include <cstdint>
#include <utility>

@implementation VelmoListenerDelegate {
    std::shared_ptr<velmo::Guard> _guard;
    velmo::XpcConnection::Log _log;
    std::atomic<std::uint64_t> _lastClient;
}

- (instancetype)initWithGuard:(std::shared_ptr<velmo::Guard>)guard
                          log:(velmo::XpcConnection::Log)log {
    self = [super init];
    if (self) {
        _guard = std::move(guard);
        _log = std::move(log);
    }
    return self;
}

- (BOOL)listener:(NSXPCListener*)listener
    shouldAcceptNewConnection:(NSXPCConnection*)newConnection {
    return _guard->acceptConnection(
        velmo::XpcConnection::of(newConnection, velmo::ClientId{++_lastClient}, _log));
}

@end

namespace velmo {

XpcService::XpcService(std::string_view name, std::shared_ptr<Guard> guard, XpcConnection::Log log)
    : listener_([[NSXPCListener alloc] initWithMachServiceName:stringFrom(name)]),
      delegate_([[VelmoListenerDelegate alloc] initWithGuard:std::move(guard) log:std::move(log)]) {
    listener_.delegate = delegate_;
    [listener_ resume];
}

} // namespace velmo
