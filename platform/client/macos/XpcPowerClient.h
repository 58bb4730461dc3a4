#pragma once

#include "core/power/VelmoPowerProtocol.h"
#include "platform/client/PowerAccess.h"

#include <functional>
#include <memory>
#include <string>

namespace velmo {

/// Connects to the power daemon of this Mac, which launchd starts if need be. Only a daemon that
/// satisfies the code-signing requirement is talked to. Null when none answers within 5 seconds.
///
/// `onLost` is called once, when the connection ends by itself; calls that were not answered by
/// then never are. Letting go of the client ends the connection too, and nothing is called any
/// more. Replies and `onLost` come through `post`.
std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemon(const std::string& requirement,
                                                         ClientContext context,
                                                         std::function<void()> onLost);

} // namespace velmo
