#include "platform/daemon/macos/XpcConnection.h"

#include "platform/daemon/macos/XpcSession.h"
#include "platform/posix/ProgramName.h"
#include "platform/xpc/PeerRequirement.h"
#include "platform/xpc/XpcProtocol.h"

#include <objc/runtime.h>

#include <utility>

namespace velmo {

std::shared_ptr<XpcConnection> XpcConnection::of(NSXPCConnection* connection, ClientId id, Log log,
                                                 std::shared_ptr<ConnectionPlaces> places) {
    static const char keeper = 0;
    const std::shared_ptr<XpcConnection> made(
        new XpcConnection(connection, id, std::move(log), std::move(places)));
    // The block is an object and owns what it captures, so that the connection keeps `made` alive.
    objc_setAssociatedObject(
        connection, &keeper,
        ^{
          static_cast<void>(made);
        },
        OBJC_ASSOCIATION_COPY);
    return made;
}

XpcConnection::XpcConnection(NSXPCConnection* connection, ClientId id, Log log,
                             std::shared_ptr<ConnectionPlaces> places)
    : connection_(connection), id_(id), log_(std::move(log)), places_(std::move(places)) {
}

std::optional<std::int64_t> XpcConnection::processId() const {
    NSXPCConnection* const connection = connection_;
    const pid_t process = connection.processIdentifier;
    return process > 0 ? std::optional<std::int64_t>(process) : std::nullopt;
}

std::optional<std::string> XpcConnection::programName() const {
    return processId().and_then(programNameOf);
}

bool XpcConnection::requireCodeSignature(const std::string& requirement) {
    return requireOfPeer(connection_, requirement, log_);
}

void XpcConnection::exportSession(std::shared_ptr<VelmoPowerProtocol> session) {
    NSXPCConnection* const connection = connection_;
    connection.exportedInterface = powerInterface();
    connection.exportedObject = [[VelmoPowerSession alloc]
        initWithSession:std::move(session)
               onCalled:[places = places_, id = id_] { places->admitted(id); }];
}

void XpcConnection::onInvalidation(std::function<void()> handler) {
    NSXPCConnection* const connection = connection_;
    const auto places = places_;
    const ClientId id = id_;
    connection.invalidationHandler = ^{
      places->leave(id);
      handler();
    };
}

void XpcConnection::resume() {
    [connection_ resume];
}

void XpcConnection::invalidate() {
    [connection_ invalidate];
}

} // namespace velmo
