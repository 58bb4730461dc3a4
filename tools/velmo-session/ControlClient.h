#pragma once

#include "platform/posix/Descriptor.h"
#include "sessions/SessionCalls.h"

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

inline constexpr std::string_view hostUnreachable = "the session host can't be reached";

/// A connection to the control socket of this user's session host. A call waits for its reply.
class ControlClient {
public:
    /// Connects; absent if no host serves.
    static std::optional<ControlClient> connect();

    /// Connects, and first starts a host in the background if none serves. The error says for
    /// people why no host serves.
    static std::expected<ControlClient, std::string> connectOrStart();

    /// Makes a call on a new connection; absent if no host serves or the host does not reply.
    static std::optional<SessionReplyLine> ask(const SessionCallLine& call);

    /// Returns the reply, or nothing if the host goes away first or takes too long.
    [[nodiscard]] std::optional<SessionReplyLine> call(const SessionCallLine& call);

    /// Does the same for a call that the host answers only when a session ends.
    [[nodiscard]] std::optional<SessionReplyLine> callAndWait(const SessionCallLine& call);

    /// Returns the connection's descriptor. The bytes that arrived behind the last reply have been
    /// read from it already and are in `rest`.
    [[nodiscard]] int get() const { return socket_.get(); }

    [[nodiscard]] const std::string& rest() const { return received_; }

private:
    explicit ControlClient(Descriptor socket) : socket_(std::move(socket)) {}

    Descriptor socket_;
    std::string received_;
};

} // namespace velmo
