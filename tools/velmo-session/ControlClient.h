#pragma once

#include "platform/posix/Descriptor.h"
#include "sessions/SessionCalls.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// A connection to the control socket of this user's session host. Calls wait for their reply.
class ControlClient {
public:
    /// Connects; absent if no host serves.
    static std::optional<ControlClient> connect();

    /// The same, after starting a host in the background if none serves.
    static std::optional<ControlClient> connectOrStart();

    /// Makes one call by a connection of its own; absent if no host serves, or none replies.
    static std::optional<SessionReplyLine> ask(const SessionCallLine& call);

    /// Returns the reply, or nothing if the host goes away first or takes too long.
    [[nodiscard]] std::optional<SessionReplyLine> call(const SessionCallLine& call);

    /// The connection, from which all that has come was read as replies, and what has come behind
    /// the last.
    [[nodiscard]] int get() const { return socket_.get(); }

    [[nodiscard]] const std::string& rest() const { return received_; }

private:
    explicit ControlClient(Descriptor socket) : socket_(std::move(socket)) {}

    Descriptor socket_;
    std::string received_;
};

inline constexpr std::string_view hostUnreachable = "the session host can't be reached";

/// Returns what a refusal means to a person: "no such session".
std::string refusalText(const SessionReplyLine& reply);

} // namespace velmo
