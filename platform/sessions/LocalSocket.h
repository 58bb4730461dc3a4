#pragma once

#include "platform/posix/Descriptor.h"

#include <cstddef>
#include <expected>
#include <string>

/// Unix-domain sockets between processes of one user.
namespace velmo::LocalSocket {

/// Connects to the socket with this path. Returns an empty descriptor if no process listens there,
/// if another user's process does, or if the path is too long for a socket.
Descriptor connect(const std::string& path);

/// Listens on a new socket with this path, which replaces any file of that name. The name appears
/// only once clients can connect. Returns an empty descriptor on any error.
Descriptor listen(const std::string& path);

/// Accepts a waiting connection. Returns an empty descriptor if none waits, if the peer is another
/// user, or on any error.
Descriptor accept(int listener);

} // namespace velmo::LocalSocket
