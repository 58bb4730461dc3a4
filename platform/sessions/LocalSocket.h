#pragma once

#include "platform/posix/Descriptor.h"

#include <cstddef>
#include <expected>
#include <string>

/// Unix-domain sockets between processes of one user.
namespace velmo::LocalSocket {

/// Connects to the socket with this path. The descriptor is none if nobody listens there, if the
/// path is longer than a socket's may be, or if whoever listens is another user.
Descriptor connect(const std::string& path);

/// Listens under this name, in place of whatever bore it: whoever finds the name can connect. The
/// descriptor is none on any error.
Descriptor listen(const std::string& path);

/// Accepts a connection that waits. The descriptor is none if there is none, or if the peer is
/// another user.
Descriptor accept(int listener);

} // namespace velmo::LocalSocket
