#pragma once

#include "core/power/VelmoPowerProtocol.h"
#include "platform/client/PowerAccess.h"

#include <functional>
#include <memory>
#include <string>

namespace velmo {

/// Connects to the power daemon of this Mac, which launchd starts if need be. A daemon that does
/// not satisfy the code-signing requirement is not talked to. Returns null if none replies within 5
/// seconds.
///
/// `onLost` is called once, when the connection ends by itself; calls without a reply by then never
/// get one. Letting go of the client ends the connection too, and nothing is called any more.
/// Replies and `onLost` come through `context.post`.
std::shared_ptr<VelmoPowerProtocol> connectToPowerDaemon(const std::string& requirement,
                                                         ClientContext context,
                                                         std::function<void()> onLost);

} // namespace velmo
