#pragma once

#include "core/support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace velmo {

/// Names a peer to the session host. One connection gets the number and none gets it again.
enum class PeerId : std::uint64_t {};

/// A stream to one peer: a terminal window, a phone's bridge or a command. What the peer sends, and
/// that it can be sent more, is told to the `SessionHost`, while it is watched for.
class Connection {
public:
    virtual ~Connection() = default;

    /// Sends as much as goes without waiting. Returns the number of bytes that went, from the front
    /// of the first piece on; absent if the peer is gone.
    [[nodiscard]] virtual std::optional<std::size_t> send(std::span<const ByteView> pieces) = 0;

    /// Says what the host wants to be told from now on.
    virtual void watch(bool readable, bool writable) = 0;

    /// Returns the process id of the leader of the peer's session, which is a program of the host's
    /// where the peer runs in a terminal session itself; absent if unknown.
    [[nodiscard]] virtual std::optional<std::uint32_t> leader() const = 0;

    /// Ends the stream. Nothing is told about it any more.
    virtual void close() = 0;
};

} // namespace velmo
