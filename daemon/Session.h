#pragma once

#include "core/power/VelmoPowerProtocol.h"
#include "daemon/ClientConnection.h"

#include <memory>

namespace velmo {

class Guard;

/// Serves one accepted connection. Calls may come on any thread; each is answered exactly once,
/// from the guard's queue, or at once with "gone" if the session has outlived its guard or its
/// connection. A session keeps neither alive.
class Session final : public VelmoPowerProtocol {
public:
    Session(std::weak_ptr<Guard> owner, std::weak_ptr<ClientConnection> connection);

    /// Returns a new session, as `Guard::acceptConnection` asks for it.
    static std::shared_ptr<VelmoPowerProtocol> make(std::weak_ptr<Guard> owner,
                                                    std::weak_ptr<ClientConnection> connection);

    void hold(std::int64_t batteryFloor, HoldReply reply) override;
    void heartbeat(Reply reply) override;
    void release(Reply reply) override;
    void report(ReportReply reply) override;

private:
    std::weak_ptr<Guard> owner_;
    std::weak_ptr<ClientConnection> connection_;
};

} // namespace velmo
