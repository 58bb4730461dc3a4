#pragma once

#include "core/support/Bytes.h"
#include "core/support/Time.h"
#include "core/terminal/Pty.h"
#include "sessions/AttachMessages.h"
#include "sessions/Connection.h"
#include "sessions/Program.h"
#include "sessions/SessionCalls.h"
#include "sessions/TerminalSession.h"
#include "sessions/TicketStore.h"
#include "sessions/Transcript.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmo {

/// Owns the terminal sessions of one user: starts programs, lets viewers in, answers the calls of
/// the control socket, and enforces the limits. All calls come on one thread. The platform reports
/// every event by one of the calls below, and calls `timePasses` when `deadline` has come.
class SessionHost {
public:
    /// Everything outside that the host uses. The references must outlive the host.
    struct Services {
        Programs& programs;
        TicketStore& tickets;
        TranscriptFiles& transcripts;
        const Pty::FileSystem& files;
        std::function<SteadyTime()> steadyTime;
        std::function<WallTime()> wallTime;
        std::function<void(std::span<std::uint8_t>)> random; ///< fills with unguessable bytes
        std::function<void(std::string_view message)> log;
    };

    /// The two sockets.
    enum class Door { attach, control };

    static constexpr std::size_t maxSessions = 64; ///< running sessions
    static constexpr std::size_t maxEnded = 256;   ///< ended sessions that are remembered
    static constexpr std::size_t maxTickets = 64;
    static constexpr std::size_t maxStrangers = 64; ///< connections that watch no session

    static constexpr std::size_t maxSent = std::size_t{1} << 16; ///< bytes of keys in one call

    static constexpr double ticketLife = 30.0;       ///< seconds until a ticket expires
    static constexpr double strangerPatience = 10.0; ///< seconds for a greeting, or for each call

    explicit SessionHost(Services services);

    /// Reports that a peer of this user has connected. A connection beyond `maxStrangers` is closed
    /// at once.
    void connected(PeerId peer, std::shared_ptr<Connection> connection, Door door);

    // Report events of a connection, as far as the host watches for them. An unknown peer is
    // ignored.
    void received(PeerId peer, ByteView bytes);
    void writable(PeerId peer);
    void connectionLost(PeerId peer);

    // Report events of a program. An unknown session is ignored.
    void programReady(SessionNumber session); ///< with output, or with room for input
    void programEnded(SessionNumber session, std::int32_t waitStatus);

    /// Returns when `timePasses` is due next; absent if nothing waits for a time.
    [[nodiscard]] std::optional<SteadyTime> deadline() const;
    void timePasses();

    /// Makes the links to SSH agents anew, since the private folder may have lost them.
    void renewAgentLinks();

    /// Tells whether the host has neither a session, ended ones included, nor a connection.
    [[nodiscard]] bool isIdle() const { return sessions_.empty() && peers_.empty(); }

private:
    struct Ticket {
        SessionNumber session;
        std::string file;
        bool isViewOnly;
        std::optional<std::size_t> lines;
        std::optional<std::string> agent;
        SteadyTime expiry;
    };

    /// A peer that has connected and does not watch a session yet.
    struct Stranger {
        std::shared_ptr<Connection> connection;
        Door door;
        SteadyTime since;
        std::string line;  ///< received, and not yet read as a greeting or a call
        std::string reply; ///< what is left to send
        std::optional<SessionNumber> waitsFor; ///< the last call is answered when this session ends
        bool isClosing = false;                ///< the connection closes once the reply is sent
    };

    using Peer = std::variant<Stranger, SessionNumber>; ///< a viewer is known by its session
    using Reply = std::expected<SessionReplyLine, SessionRefusal>;
    using Sessions = std::map<SessionNumber, TerminalSession>;

    void receivedByStranger(PeerId peer, Stranger& stranger, ByteView bytes);
    void takeGreeting(PeerId peer, Stranger& stranger);
    void greet(PeerId peer, Stranger& stranger, const PtyAttach::client::Hello& hello);
    void refuse(PeerId peer, Stranger& stranger, std::string_view code);
    void takeCalls(PeerId peer);
    void handleCall(PeerId peer, Stranger& stranger, std::string_view line);
    Reply perform(const SessionCallLine& call);
    Reply start(const SessionCallLine& call);
    std::expected<std::optional<Transcript>, SessionRefusal>
    openTranscript(const SessionCallLine& call);
    Reply list() const;
    Reply ticket(const SessionCallLine& call);
    Reply send(const SessionCallLine& call);
    Reply peek(const SessionCallLine& call) const;
    Reply detach(const SessionCallLine& call);
    Reply end(const SessionCallLine& call);
    void wait(PeerId peer, Stranger& stranger, const SessionCallLine& call);
    void tellWaiters(const TerminalSession& session);
    void stream(PeerId peer, Stranger& stranger, const SessionCallLine& call);
    void answer(PeerId peer, Stranger& stranger, const Reply& reply);
    void sendReply(PeerId peer, Stranger& stranger);
    Stranger* strangerOf(PeerId peer);
    void drop(PeerId peer);
    void watch(PeerId peer, Stranger& stranger, std::unique_ptr<Viewer> viewer,
               TerminalSession::Admission admission, TerminalSession& session);
    std::vector<SessionNumber> sessionsAround(const Stranger& stranger) const;
    std::optional<SessionRefusal> refusalToJoin(const std::vector<SessionNumber>& runsIn,
                                                const TerminalSession& session) const;
    bool isShownIn(SessionNumber shown, SessionNumber session) const;
    std::optional<SessionNumber> named(const std::string& session) const;
    std::expected<SessionNumber, SessionRefusal> find(const SessionCallLine& call) const;
    std::expected<std::string, SessionRefusal> nameFor(const SessionCallLine& call,
                                                       std::string_view program) const;
    bool isNameTaken(std::string_view name) const;
    std::optional<Ticket> redeem(const std::string& token);
    bool pointAgentLink(const std::string& id, const std::string& agent);
    void useAgent(const std::optional<std::string>& agent, const TerminalSession& session);
    void forgetDismissed(TerminalSession& session);
    void expireTickets(SteadyTime now);
    void forgetEnded(SteadyTime now);
    std::string randomHex(std::size_t bytes) const;
    std::string randomToken() const;

    template<class Action>
    void withSession(SessionNumber number, const Action& action);
    template<class Action>
    void withSessionOf(PeerId peer, const Action& action);

    Services services_;
    Sessions sessions_;
    std::map<PeerId, Peer> peers_;
    std::map<std::string, Ticket> tickets_;       ///< by token
    std::map<SessionNumber, std::string> agents_; ///< to which sessions' links lead
    std::size_t strangers_ = 0;
    std::uint64_t lastSession_ = 0;
};

} // namespace velmo
