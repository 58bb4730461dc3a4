#pragma once

#include "platform/client/Installation.h"

#include "client/PowerLink.h"
#include "machine/PowerMachine.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace velmo {

/// A Mac as a client reaches it: what anyone may read of it, and the way to its daemon.
struct PowerAccess {
    std::unique_ptr<PowerMachine> machine;
    std::unique_ptr<PowerLink> link;
    /// Keeps an idle Mac from sleeping for as long as what it returns lives, lid open. Needs no
    /// daemon; null where the system refuses.
    std::function<std::shared_ptr<void>()> preventIdleSleep;
    /// Turns the display off until somebody touches the machine. Returns before it is.
    std::function<void()> turnDisplayOff;
    /// Looks at how the daemon is installed.
    std::function<Installation()> examine;
};

/// What a connection needs of the program that it works for.
struct ClientContext {
    /// Runs the work later, on the thread that uses the connection. May be called from any thread,
    /// but never after the connection was let go.
    std::function<void(std::function<void()>)> post;
    /// Is told, on the calling thread, of what a person can mend.
    std::function<void(std::string_view message)> log;
};

/// Returns the Mac that this program runs on; absent on other systems.
std::optional<PowerAccess> accessThisMac(ClientContext context);

} // namespace velmo
