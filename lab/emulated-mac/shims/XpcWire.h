#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The emulated XPC between processes: messages over a Unix socket that keeps them apart. A message
/// is a list of words with a NUL between them. The first message of each side is
///
///     identity TEAM IDENTIFIER
///
/// which stands for what the kernel tells about a peer. Then come
///
///     call NUMBER SELECTOR ARGUMENT...
///     reply NUMBER ARGUMENT...
///     lost NUMBER                         (the reply block was released without a call)
///
/// An argument is "q" and a number, "B" and 0 or 1, "@" and a text, or "-" for nil.
namespace velmo {

using Words = std::vector<std::string>;

/// Returns false when the peer is gone.
bool sendWords(int socket, const Words& words);

/// Waits for the next message; absent when the peer is gone.
std::optional<Words> receiveWords(int socket);

/// Connects to the socket. Returns -1 if no process listens there.
int connectTo(const std::string& path);

} // namespace velmo
