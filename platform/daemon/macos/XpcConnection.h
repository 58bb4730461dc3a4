#pragma once

#include "daemon/ClientConnection.h"
#include "daemon/ConnectionPlaces.h"

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// The XPC connection of one client. The NSXPCConnection owns this object, which refers back
/// weakly, so that both end together: the system keeps a resumed connection until it is
/// invalidated.
class XpcConnection final : public ClientConnection {
public:
    using Log = std::function<void(std::string_view message)>;

    /// Makes the connection's one object. `log` gets the reason if a requirement is malformed;
    /// `places` is told of the client's calls and of the connection's end.
    static std::shared_ptr<XpcConnection> of(NSXPCConnection* connection, ClientId id, Log log,
                                             std::shared_ptr<ConnectionPlaces> places);

    [[nodiscard]] ClientId id() const override { return id_; }

    [[nodiscard]] std::optional<std::int64_t> processId() const override;
    [[nodiscard]] std::optional<std::string> programName() const override;

    bool requireCodeSignature(const std::string& requirement) override;
    void exportSession(std::shared_ptr<VelmoPowerProtocol> session) override;
    void onInvalidation(std::function<void()> handler) override;
    void resume() override;

    /// Ends the connection; the system then calls the invalidation handler.
    void invalidate();

private:
    XpcConnection(NSXPCConnection* connection, ClientId id, Log log,
                  std::shared_ptr<ConnectionPlaces> places);

    __weak NSXPCConnection* connection_;
    ClientId id_;
    Log log_;
    std::shared_ptr<ConnectionPlaces> places_;
};

} // namespace velmo
