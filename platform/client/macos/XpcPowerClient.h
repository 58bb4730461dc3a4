#pragma once

#include "core/power/VelmoPowerProtocol.h"
#include "platform/client/PowerAccess.h"

#include <functional>
#include <memory>
#include <string>

namespace velmo {

/// Returns a connection to the power daemon of this Mac. The first call connects, and launchd then
/// starts the daemon if need be. A daemon that does not satisfy the code-signing requirement gets
/// no call. Returns null if the requirement is malformed.
///
/// `onLost` is called once, when no daemon can be reached or the connection ends by itself; calls
/// without a reply by then never get one. Releasing the returned object ends the connection too,
/// and nothing is called after that. Replies and `onLost` come through `context.post`.
std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemon(const std::string& requirement,
                                                         ClientContext context,
                                                         std::function<void()> onLost);

} // namespace velmo
