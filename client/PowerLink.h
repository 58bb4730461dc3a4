#pragma once

#include "core/power/VelmoPowerProtocol.h"

#include <functional>
#include <memory>

namespace velmo {

/// Reaches the power daemon, by one connection after another. Replies and `onLost` are called on
/// the thread that uses the link.
class PowerLink {
public:
    /// Why a connection was lost.
    enum class Loss {
        ended,          ///< no daemon can be reached, or the daemon ended the connection
        tooManyClients, ///< the daemon refused it; only a simulated Mac's daemon says so
    };

    virtual ~PowerLink() = default;

    /// Returns a new connection, or null if none can be made. Does not wait: if the daemon can't be
    /// reached, the connection is lost later. `onLost` is called once if the connection ends by
    /// itself, never before this function returns, and never after the caller has released the
    /// connection.
    virtual std::shared_ptr<VelmoPowerProtocol> connect(std::function<void(Loss)> onLost) = 0;
};

} // namespace velmo
