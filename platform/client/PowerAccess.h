#pragma once

#include "client/PowerLink.h"
#include "machine/PowerMachine.h"
#include "platform/client/Installation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace velmo {

/// A Mac as a client reaches it: what any user may read of it, and the way to its daemon.
struct PowerAccess {
    std::unique_ptr<PowerMachine> machine;
    std::unique_ptr<PowerLink> link;
    /// Keeps an idle Mac with its lid open from sleeping for as long as the returned object lives.
    /// Needs no daemon. Returns null if the system refuses. The function itself is empty on a
    /// simulated Mac.
    std::function<std::shared_ptr<void>()> preventIdleSleep;
    /// Turns the display off until the machine is touched. Returns before the display is off.
    std::function<void()> turnDisplayOff;
    /// Looks at how the daemon is installed.
    std::function<Installation()> examine;
};

/// What a connection needs from the program that uses it.
struct ClientContext {
    /// Runs the work later, on the thread that uses the connection. The connection calls it from
    /// any thread, but never after it was released.
    std::function<void(std::function<void()>)> post;
    /// Logs what a person can mend. Called on the thread that calls `PowerLink::connect`.
    std::function<void(std::string_view message)> log;
};

/// Returns the Mac that this program runs on; absent on other systems.
std::optional<PowerAccess> accessThisMac(ClientContext context);

} // namespace velmo
