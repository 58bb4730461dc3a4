#pragma once

#include "core/power/VelmoPowerProtocol.h"

#include <functional>
#include <memory>

namespace velmo {

/// Reaches the power daemon, by one connection after another. Everything that it calls back is
/// called on the thread of whoever uses it.
class PowerLink {
public:
    virtual ~PowerLink() = default;

    /// Returns a new connection, or null where there can be none. It does not wait: a daemon that
    /// can't be reached is a connection that is lost. `onLost` is called once if the connection
    /// ends by itself, never before this returns, and never after the connection has been let go.
    virtual std::shared_ptr<VelmoPowerProtocol> connect(std::function<void()> onLost) = 0;
};

} // namespace velmo
