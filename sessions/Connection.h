#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velmo {

/// Names a peer to the session host. Every connection gets a number of its own, which is never used
/// again.
enum class PeerId : std::uint64_t {};

/// A stream to one peer: a terminal window, a phone's bridge or a command. An implementation tells
/// the `SessionHost` what the peer sends and when more can be sent to the peer, as far as `watch`
/// asks for it.
class Connection {
public:
    virtual ~Connection() = default;

    /// Sends as much as the stream takes without waiting. Returns the number of bytes sent, counted
    /// from the front of the first piece; absent if the peer is gone.
    [[nodiscard]] virtual std::optional<std::size_t> send(std::span<const ByteView> pieces) = 0;

    /// Sets what the host is told from now on: that the peer has sent something (`readable`), and
    /// that more can be sent to the peer (`writable`).
    virtual void watch(bool readable, bool writable) = 0;

    /// Returns the process ids of the peer, of its ancestors, and of the leaders of the sessions
    /// that the kernel has them in, as far as the system tells. If the peer runs in a terminal
    /// session, that session's program is among them, unless the system hides a process between the
    /// two.
    [[nodiscard]] virtual std::vector<std::uint32_t> ancestry() const = 0;

    /// Ends the stream. The host is told nothing about it afterwards.
    virtual void close() = 0;
};

} // namespace velmo
