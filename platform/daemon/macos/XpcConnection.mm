#include "platform/daemon/macos/XpcConnection.h"

#include "platform/daemon/macos/XpcSession.h"
#include "platform/posix/ProgramName.h"
#include "platform/xpc/PeerRequirement.h"
#include "platform/xpc/XpcProtocol.h"

#include <objc/runtime.h>

#include <utility>

namespace velmo {

std::shared_ptr<XpcConnection> XpcConnection::of(NSXPCConnection* connection, ClientId id,
                                                 Log log) {
    static const char keeper = 0;
    const std::shared_ptr<XpcConnection> made(new XpcConnection(connection, id, std::move(log)));
    // A block is an object that keeps what it names.
    objc_setAssociatedObject(
        connection, &keeper,
        ^{
          static_cast<void>(made);
        },
        OBJC_ASSOCIATION_COPY);
    return made;
}

XpcConnection::XpcConnection(NSXPCConnection* connection, ClientId id, Log log)
    : connection_(connection), id_(id), log_(std::move(log)) {
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

void XpcConnection::exportSession(std::shared_ptr<Session> session) {
    NSXPCConnection* const connection = connection_;
    connection.exportedInterface = powerInterface();
    connection.exportedObject = [[VelmoPowerSession alloc] initWithSession:std::move(session)];
}

void XpcConnection::onInvalidation(std::function<void()> handler) {
    NSXPCConnection* const connection = connection_;
    connection.invalidationHandler = ^{
      handler();
    };
}

void XpcConnection::resume() {
    [connection_ resume];
}

} // namespace velmo
