#pragma once

#include "core/power/VelmoPowerProtocol.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velmo {

/// How a client over XPC meets its surroundings.
struct XpcClientContext {
    /// Runs the work later, on the thread that uses the client. Called from any thread, never after
    /// the client was let go.
    std::function<void(std::function<void()>)> post;
    /// Hears of what a person can mend, on the calling thread.
    std::function<void(std::string_view message)> log;
};

/// Connects to the power daemon of this Mac, which launchd starts if need be. Only a daemon that
/// satisfies the code-signing requirement is talked to. Null when none answers within 5 seconds.
///
/// `onLost` is called once, when the connection ends by itself; calls that were not answered by
/// then never are. Letting go of the client ends the connection too, and nothing is called any
/// more. Replies and `onLost` come through `post`.
std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemon(const std::string& requirement,
                                                         XpcClientContext context,
                                                         std::function<void()> onLost);

} // namespace velmo
