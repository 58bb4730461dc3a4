#include "sessions/SessionHost.h"

#include "core/support/Base64.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/AttachTicket.h"
#include "sessions/AttachMessages.h"
#include "sessions/SpawnRefusal.h"

#include <algorithm>
#include <ranges>
#include <set>
#include <utility>

namespace velmo {

namespace {

constexpr std::size_t tokenBytes = 32;
constexpr std::size_t maxNameBytes = 256;
constexpr const char* agentVariable = "SSH_AUTH_SOCK";

/// Returns the name of the session's link to an SSH agent.
std::string agentLinkOf(const std::string& id) {
    return std::string(agentLinkPrefix) + id;
}

/// Reads the entries of an environment, and leaves out an entry without "=".
Pty::Environment environmentOf(const SessionCallLine& call) {
    Pty::Environment environment;
    for (const std::string& entry : call.environment.value_or(std::vector<std::string>())) {
        const std::size_t end = entry.find('=');
        if (end != std::string::npos)
            environment.insert_or_assign(entry.substr(0, end), entry.substr(end + 1));
    }
    return environment;
}

/// Returns the greeting in a control frame; absent for any other message.
std::optional<PtyAttach::client::Hello> helloIn(ByteView payload) {
    const auto object = PtyAttach::ControlObject::parse(textOf(payload));
    const auto message = object ? PtyAttach::clientMessage(object->object()) : std::nullopt;
    const auto* const hello = message ? std::get_if<PtyAttach::client::Hello>(&*message) : nullptr;
    return hello == nullptr ? std::nullopt : std::optional(*hello);
}

std::optional<std::size_t> linesOf(const SessionCallLine& call) {
    return call.lines.transform([](std::int64_t lines) {
        return static_cast<std::size_t>(std::max<std::int64_t>(lines, 0));
    });
}

SteadyTime after(SteadyTime moment, double seconds) {
    return {moment.seconds + seconds};
}

} // namespace

SessionHost::SessionHost(Services services) : services_(std::move(services)) {
}

void SessionHost::connected(PeerId peer, std::shared_ptr<Connection> connection, Door door) {
    if (strangers_ == maxStrangers) {
        connection->close();
        return;
    }
    ++strangers_;
    connection->watch(true, false);
    peers_.emplace(peer, Stranger{.connection = std::move(connection),
                                  .door = door,
                                  .since = services_.steadyTime()});
}

void SessionHost::received(PeerId peer, ByteView bytes) {
    if (Stranger* const stranger = strangerOf(peer)) {
        receivedByStranger(peer, *stranger, bytes);
        return;
    }
    withSessionOf(peer, [&](TerminalSession& session) {
        session.received(peer, bytes, services_.steadyTime());
    });
}

void SessionHost::writable(PeerId peer) {
    if (Stranger* const stranger = strangerOf(peer)) {
        sendReply(peer, *stranger);
        takeCalls(peer);
        return;
    }
    withSessionOf(peer,
                  [&](TerminalSession& session) { session.writable(services_.steadyTime()); });
}

void SessionHost::connectionLost(PeerId peer) {
    if (strangerOf(peer) != nullptr) {
        drop(peer);
        return;
    }
    withSessionOf(peer, [&](TerminalSession& session) {
        session.connectionLost(peer, services_.steadyTime());
    });
}

void SessionHost::programReady(SessionNumber session) {
    withSession(session,
                [&](TerminalSession& ready) { ready.programReadable(services_.steadyTime()); });
}

void SessionHost::programEnded(SessionNumber session, std::int32_t waitStatus) {
    withSession(session, [&](TerminalSession& ended) {
        ended.programEnded(waitStatus, services_.steadyTime());
    });
}

template<class Action>
void SessionHost::withSessionOf(PeerId peer, const Action& action) {
    const auto found = peers_.find(peer);
    if (found != peers_.end())
        withSession(std::get<SessionNumber>(found->second), action);
}

template<class Action>
void SessionHost::withSession(SessionNumber number, const Action& action) {
    const auto found = sessions_.find(number);
    if (found == sessions_.end())
        return;
    action(found->second);
    forgetDismissed(found->second);
}

/// Forgets the viewers that have left, and has the session note the time if its first viewer came
/// or its last one left.
void SessionHost::forgetDismissed(TerminalSession& session) {
    for (const PeerId peer : session.takeDismissed())
        peers_.erase(peer);
    session.noteDate(services_.wallTime());
    if (session.takeTranscriptLoss())
        services_.log("session " + session.identity().id
                      + " goes on without its transcript, which can't be written");
    if (!session.endedSince())
        return;
    tellWaiters(session);
    if (agents_.erase(session.identity().number) > 0)
        services_.tickets.remove(agentLinkOf(session.identity().id));
}

void SessionHost::receivedByStranger(PeerId peer, Stranger& stranger, ByteView bytes) {
    if (stranger.waitsFor) { // a peer that waits has nothing to say
        drop(peer);
        return;
    }
    stranger.line.append(textOf(bytes));
    if (stranger.door == Door::attach)
        takeGreeting(peer, stranger);
    else
        takeCalls(peer);
}

/// Reads the first frame once it is whole. What stands behind it, such as keys that were typed
/// early, is for the viewer that the peer becomes.
void SessionHost::takeGreeting(PeerId peer, Stranger& stranger) {
    const ByteView received = bytesOf(stranger.line);
    if (received.size() < FrameHeader::bytes)
        return;
    const FrameHeader header = FrameHeader::read(received);
    const std::size_t length = FrameHeader::bytes + header.length;
    const bool canBeHello = header.type == std::to_underlying(PtyAttach::FrameType::control)
                            && header.length <= PtyAttach::maxControl;
    if (canBeHello && received.size() < length)
        return;
    const auto hello =
        canBeHello ? helloIn(received.subspan(FrameHeader::bytes, header.length)) : std::nullopt;
    if (!hello) {
        refuse(peer, stranger, "bad-hello");
        return;
    }
    stranger.line.erase(0, length);
    greet(peer, stranger, *hello);
}

void SessionHost::greet(PeerId peer, Stranger& stranger, const PtyAttach::client::Hello& hello) {
    const auto ticket = redeem(hello.token);
    const auto session = ticket ? sessions_.find(ticket->session) : sessions_.end();
    if (session == sessions_.end()) {
        refuse(peer, stranger, ticket ? rawText(SessionRefusal::ended) : "bad-token");
        return;
    }
    TerminalSession::Admission admission{.size = hello.size,
                                         .lines = ticket->lines,
                                         .mayType = !ticket->isViewOnly,
                                         .runsIn = sessionsAround(stranger)};
    if (const auto refusal = refusalToJoin(admission.runsIn, session->second)) {
        refuse(peer, stranger, rawText(*refusal));
        return;
    }
    if (admission.mayType)
        useAgent(ticket->agent, session->second);
    watch(peer, stranger, std::make_unique<Viewer>(peer, stranger.connection, AttachDecoder()),
          std::move(admission), session->second);
}

/// Returns the sessions that the stranger's process runs in.
std::vector<SessionNumber> SessionHost::sessionsAround(const Stranger& stranger) const {
    const auto ancestry = stranger.connection->ancestry();
    std::vector<SessionNumber> around;
    for (const auto& [number, session] : sessions_) {
        if (session.process() && std::ranges::find(ancestry, *session.process()) != ancestry.end())
            around.push_back(number);
    }
    return around;
}

/// Returns why a viewer that runs in these sessions may not watch the session; absent if it may.
/// The session's output may not flow back into the session, straight or through others.
std::optional<SessionRefusal> SessionHost::refusalToJoin(const std::vector<SessionNumber>& runsIn,
                                                         const TerminalSession& session) const {
    if (const auto refusal = session.refusal())
        return refusal;
    const SessionNumber shown = session.identity().number;
    const bool isCircle =
        std::ranges::any_of(runsIn, [&](SessionNumber outer) { return isShownIn(outer, shown); });
    return isCircle ? std::optional(SessionRefusal::itself) : std::nullopt;
}

/// Tells whether the output of `shown` reaches the other session, which it does if both are one.
bool SessionHost::isShownIn(SessionNumber shown, SessionNumber session) const {
    std::set<SessionNumber> reached{shown};
    std::vector<SessionNumber> next{shown};
    while (!next.empty()) {
        const auto found = sessions_.find(next.back());
        next.pop_back();
        if (found == sessions_.end())
            continue;
        for (const SessionNumber outer : found->second.shownIn()) {
            if (reached.insert(outer).second)
                next.push_back(outer);
        }
    }
    return reached.contains(session);
}

void SessionHost::refuse(PeerId peer, Stranger& stranger, std::string_view code) {
    stranger.reply = textOf(PtyAttach::errorFrame(code));
    stranger.isClosing = true;
    sendReply(peer, stranger);
}

/// Turns a stranger into a viewer of the session, which gets what the stranger has sent too early.
void SessionHost::watch(PeerId peer, Stranger& stranger, std::unique_ptr<Viewer> viewer,
                        TerminalSession::Admission admission, TerminalSession& session) {
    const std::string early = std::move(stranger.line);
    --strangers_;
    peers_.insert_or_assign(peer, session.identity().number);
    session.attach(std::move(viewer), std::move(admission), services_.steadyTime(),
                   services_.wallTime());
    forgetDismissed(session);
    if (!early.empty())
        received(peer, bytesOf(early));
}

/// Answers the calls that have arrived whole, one by one: the next call is read only after the
/// reply to the last has been sent.
void SessionHost::takeCalls(PeerId peer) {
    while (Stranger* const stranger = strangerOf(peer)) {
        if (!stranger->reply.empty() || stranger->waitsFor)
            return;
        const std::size_t end = stranger->line.find('\n');
        const bool isWhole = end != std::string::npos;
        if ((isWhole ? end : stranger->line.size()) >= maxSessionLine) {
            drop(peer);
            return;
        }
        stranger->connection->watch(!isWhole, false);
        if (!isWhole)
            return;
        const std::string line = stranger->line.substr(0, end);
        stranger->line.erase(0, end + 1);
        stranger->since = services_.steadyTime();
        handleCall(peer, *stranger, line);
    }
}

void SessionHost::handleCall(PeerId peer, Stranger& stranger, std::string_view line) {
    const auto call = decodeRecord<SessionCallLine>(line);
    stranger.isClosing = !call;
    if (!call)
        answer(peer, stranger, std::unexpected(SessionRefusal::call));
    else if (call->call == SessionCall::stream)
        stream(peer, stranger, *call);
    else if (call->call == SessionCall::wait)
        wait(peer, stranger, *call);
    else
        answer(peer, stranger, perform(*call));
}

SessionHost::Reply SessionHost::perform(const SessionCallLine& call) {
    switch (call.call) {
    case SessionCall::start:
        return start(call);
    case SessionCall::list:
        return list();
    case SessionCall::ticket:
        return ticket(call);
    case SessionCall::send:
        return send(call);
    case SessionCall::peek:
        return peek(call);
    case SessionCall::detach:
        return detach(call);
    case SessionCall::end:
        return end(call);
    case SessionCall::stream:
    case SessionCall::wait:
        break;
    }
    return std::unexpected(SessionRefusal::call);
}

void SessionHost::answer(PeerId peer, Stranger& stranger, const Reply& reply) {
    const SessionReplyLine line =
        reply ? *reply : SessionReplyLine{.reason = std::string(rawText(reply.error()))};
    stranger.reply = encodeJson(line).value() + "\n"; // texts and finite numbers
    sendReply(peer, stranger);
}

void SessionHost::sendReply(PeerId peer, Stranger& stranger) {
    while (!stranger.reply.empty()) {
        const auto sent = stranger.connection->send(std::array{bytesOf(stranger.reply)});
        if (!sent) {
            drop(peer);
            return;
        }
        if (*sent == 0) {
            stranger.connection->watch(false, true);
            return;
        }
        stranger.reply.erase(0, *sent);
    }
    if (stranger.isClosing)
        drop(peer);
}

/// Returns null for a viewer and for an unknown peer.
SessionHost::Stranger* SessionHost::strangerOf(PeerId peer) {
    const auto found = peers_.find(peer);
    return found == peers_.end() ? nullptr : std::get_if<Stranger>(&found->second);
}

void SessionHost::drop(PeerId peer) {
    const auto found = peers_.find(peer);
    std::get<Stranger>(found->second).connection->close();
    peers_.erase(found);
    --strangers_;
}

SessionHost::Reply SessionHost::start(const SessionCallLine& call) {
    if (!call.words)
        return std::unexpected(SessionRefusal::call);
    forgetEnded(services_.steadyTime());
    const auto running = std::ranges::count_if(
        sessions_, [](const auto& session) { return !session.second.endedSince(); });
    if (std::cmp_greater_equal(running, maxSessions))
        return std::unexpected(SessionRefusal::limit);
    Pty::Environment environment = environmentOf(call);
    auto request = Pty::parseSpawn(*call.words, environment, services_.files);
    if (!request)
        return std::unexpected(refusalOf(*call.words, environment, services_.files));
    auto name = nameFor(call, request->argv.front());
    if (!name)
        return std::unexpected(name.error());

    auto transcript = openTranscript(call);
    if (!transcript)
        return std::unexpected(transcript.error());

    const SessionNumber number{++lastSession_};
    const std::string id = "s_" + randomHex(8);
    const auto agent = environment.find(agentVariable);
    std::optional<std::string> target;
    if (agent != environment.end() && pointAgentLink(id, agent->second))
        target = std::exchange(agent->second,
                               PathText::join(services_.tickets.folder(), agentLinkOf(id)));
    auto program = services_.programs.start(number, *request, Pty::childEnvironment(environment));
    if (!program) {
        services_.tickets.remove(agentLinkOf(id));
        return std::unexpected(SessionRefusal::system);
    }
    if (target)
        agents_.emplace(number, *std::move(target));
    services_.log("session " + id + " started: " + request->program);
    sessions_.emplace(number, TerminalSession({.number = number,
                                               .id = id,
                                               .name = *std::move(name),
                                               .request = *std::move(request),
                                               .since = services_.wallTime()},
                                              std::move(program), *std::move(transcript)));
    return SessionReplyLine{.ok = true, .session = id};
}

/// Opens the file that the call names for the transcript, if it names one.
std::expected<std::optional<Transcript>, SessionRefusal>
SessionHost::openTranscript(const SessionCallLine& call) {
    if (!call.transcript)
        return std::nullopt;
    if (!PathText::isCleanAbsoluteFile(*call.transcript))
        return std::unexpected(SessionRefusal::transcript);
    auto file = services_.transcripts.open(*call.transcript);
    if (file)
        return Transcript(*std::move(file));
    return std::unexpected(file.error() == TranscriptFiles::Fault::busy
                               ? SessionRefusal::busy
                               : SessionRefusal::transcript);
}

/// Points the session's link at the agent's socket. Returns false for a path that can't be one's.
bool SessionHost::pointAgentLink(const std::string& id, const std::string& agent) {
    const std::string name = agentLinkOf(id);
    return Pty::isCleanAbsolutePath(agent)
           && agent != PathText::join(services_.tickets.folder(), name)
           && services_.tickets.link(name, agent);
}

/// Lets the session's programs use the SSH agent of a viewer that may type.
void SessionHost::useAgent(const std::optional<std::string>& agent,
                           const TerminalSession& session) {
    const auto& identity = session.identity();
    const auto found = agents_.find(identity.number);
    if (agent && found != agents_.end() && pointAgentLink(identity.id, *agent))
        found->second = *agent;
}

void SessionHost::renewAgentLinks() {
    for (const auto& [number, agent] : agents_)
        pointAgentLink(sessions_.at(number).identity().id, agent);
}

std::expected<std::string, SessionRefusal> SessionHost::nameFor(const SessionCallLine& call,
                                                                std::string_view program) const {
    if (call.name) {
        std::string name = PtyAttach::sanitizeTitle(*call.name);
        if (name.empty() || name.size() > maxNameBytes || PtyAttach::isSessionId(name))
            return std::unexpected(SessionRefusal::misnamed);
        if (isNameTaken(name))
            return std::unexpected(SessionRefusal::name);
        return name;
    }
    const std::string tool(PathText::lastComponent(program));
    std::string name = tool;
    for (std::size_t i = 2; isNameTaken(name); ++i)
        name = tool + "-" + std::to_string(i);
    return name;
}

bool SessionHost::isNameTaken(std::string_view name) const {
    return std::ranges::any_of(sessions_, [&](const auto& session) {
        return !session.second.endedSince() && session.second.identity().name == name;
    });
}

SessionHost::Reply SessionHost::list() const {
    std::vector<SessionEntry> entries;
    for (const auto& [number, session] : sessions_)
        entries.push_back(session.entry());
    return SessionReplyLine{.ok = true, .sessions = std::move(entries)};
}

/// Returns the running session with this id or name. The refusal is `ended` if only ended sessions
/// have it, and `unknown` otherwise.
std::expected<SessionNumber, SessionRefusal> SessionHost::find(const SessionCallLine& call) const {
    if (!call.session)
        return std::unexpected(SessionRefusal::call);
    const auto number = named(*call.session);
    if (!number)
        return std::unexpected(SessionRefusal::unknown);
    if (sessions_.at(*number).endedSince())
        return std::unexpected(SessionRefusal::ended);
    return *number;
}

/// Returns the session with this id or name that was started last. If one of them runs, it is this
/// one, since no session may start under its name.
std::optional<SessionNumber> SessionHost::named(const std::string& session) const {
    std::optional<SessionNumber> last;
    for (const auto& [number, each] : sessions_) {
        const auto& identity = each.identity();
        if (identity.id == session || identity.name == session)
            last = number;
    }
    return last;
}

SessionHost::Reply SessionHost::ticket(const SessionCallLine& call) {
    const auto session = find(call);
    if (!session)
        return std::unexpected(session.error());
    if (tickets_.size() == maxTickets)
        return std::unexpected(SessionRefusal::limit);
    const std::string folder = services_.tickets.folder();
    const PtyAttach::Ticket ticket{.endpoint = PathText::join(folder, PtyAttach::socketName),
                                   .token = randomToken(),
                                   .session = sessions_.at(*session).identity().id};
    const std::string file = "a-" + randomHex(16) + ".json";
    const auto content = encodeJson(ticket);
    if (!content || content->size() > PtyAttach::maxTicketBytes
        || !services_.tickets.write(file, *content))
        return std::unexpected(SessionRefusal::system);
    tickets_.emplace(ticket.token, Ticket{.session = *session,
                                          .file = file,
                                          .isViewOnly = call.viewOnly.value_or(false),
                                          .lines = linesOf(call),
                                          .agent = call.agent,
                                          .expiry = after(services_.steadyTime(), ticketLife)});
    return SessionReplyLine{.ok = true, .ticket = PathText::join(folder, file)};
}

/// Returns the ticket with this token, and voids it: a second client with the token gets nothing,
/// as does one that comes after the ticket's expiry.
std::optional<SessionHost::Ticket> SessionHost::redeem(const std::string& token) {
    expireTickets(services_.steadyTime());
    auto ticket = tickets_.extract(token);
    if (ticket.empty())
        return std::nullopt;
    services_.tickets.remove(ticket.mapped().file);
    return std::move(ticket.mapped());
}

void SessionHost::stream(PeerId peer, Stranger& stranger, const SessionCallLine& call) {
    const auto number = find(call);
    if (!number) {
        answer(peer, stranger, std::unexpected(number.error()));
        return;
    }
    TerminalSession& session = sessions_.at(*number);
    TerminalSession::Admission admission{.lines = linesOf(call),
                                         .mayType = !call.viewOnly.value_or(false),
                                         .runsIn = sessionsAround(stranger)};
    if (const auto refusal = refusalToJoin(admission.runsIn, session)) {
        answer(peer, stranger, std::unexpected(*refusal));
        return;
    }
    if (admission.mayType)
        useAgent(call.agent, session);
    auto viewer = std::make_unique<Viewer>(peer, stranger.connection, StreamDecoder());
    viewer->tell(bytesOf(encodeJson(SessionReplyLine{.ok = true}).value() + "\n"));
    watch(peer, stranger, std::move(viewer), std::move(admission), session);
}

SessionHost::Reply SessionHost::send(const SessionCallLine& call) {
    const auto session = find(call);
    if (!session)
        return std::unexpected(session.error());
    if (!call.keys || call.keys->size() > maxSent)
        return std::unexpected(SessionRefusal::call);
    bool isSent = false;
    withSession(*session, [&](TerminalSession& each) {
        isSent = each.send(bytesOf(*call.keys), services_.steadyTime());
    });
    if (!isSent)
        return std::unexpected(SessionRefusal::limit);
    return SessionReplyLine{.ok = true};
}

SessionHost::Reply SessionHost::peek(const SessionCallLine& call) const {
    const auto session = find(call);
    if (!session)
        return std::unexpected(session.error());
    const Screen screen = sessions_.at(*session).screen();
    std::vector<std::string> lines = screen.text();
    const std::size_t asked = linesOf(call).value_or(lines.size());
    if (lines.size() > asked)
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(asked));
    return SessionReplyLine{.ok = true,
                            .screen = SessionScreen{.cols = screen.size().cols,
                                                    .rows = screen.size().rows,
                                                    .cursorColumn = screen.cursor().column,
                                                    .cursorRow = screen.cursor().row,
                                                    .alternate = screen.isAlternate(),
                                                    .lines = std::move(lines)}};
}

SessionHost::Reply SessionHost::detach(const SessionCallLine& call) {
    const auto session = find(call);
    if (!session)
        return std::unexpected(session.error());
    withSession(*session, [&](TerminalSession& each) { each.detach(services_.steadyTime()); });
    return SessionReplyLine{.ok = true};
}

/// Answers at once if the session has ended, and otherwise when it ends.
void SessionHost::wait(PeerId peer, Stranger& stranger, const SessionCallLine& call) {
    const auto number = call.session ? named(*call.session) : std::nullopt;
    if (!number) {
        answer(peer, stranger,
               std::unexpected(call.session ? SessionRefusal::unknown : SessionRefusal::call));
        return;
    }
    stranger.waitsFor = number;
    stranger.connection->watch(true, false); // tells that the peer is gone
    if (const TerminalSession& session = sessions_.at(*number); session.endedSince())
        tellWaiters(session);
}

void SessionHost::tellWaiters(const TerminalSession& session) {
    std::vector<PeerId> waiters;
    for (const auto& [id, peer] : peers_) {
        const auto* const stranger = std::get_if<Stranger>(&peer);
        if (stranger != nullptr && stranger->waitsFor == session.identity().number)
            waiters.push_back(id);
    }
    for (const PeerId waiter : waiters) {
        Stranger& stranger = *strangerOf(waiter);
        stranger.waitsFor.reset();
        stranger.since = services_.steadyTime();
        stranger.isClosing = true;
        answer(waiter, stranger,
               SessionReplyLine{.ok = true, .exitCode = session.entry().exitCode});
    }
}

SessionHost::Reply SessionHost::end(const SessionCallLine& call) {
    const auto session = find(call);
    if (!session)
        return std::unexpected(session.error());
    withSession(*session, [&](TerminalSession& ended) { ended.end(services_.steadyTime()); });
    return SessionReplyLine{.ok = true};
}

std::optional<SteadyTime> SessionHost::deadline() const {
    std::optional<SteadyTime> earliest;
    const auto consider = [&](std::optional<SteadyTime> time) {
        if (time && (!earliest || *time < *earliest))
            earliest = time;
    };
    for (const auto& [number, session] : sessions_) {
        consider(session.deadline());
        consider(session.endedSince().transform(
            [](SteadyTime end) { return after(end, TerminalSession::memory); }));
    }
    for (const auto& [token, ticket] : tickets_)
        consider(ticket.expiry);
    for (const auto& [id, peer] : peers_) {
        const auto* const stranger = std::get_if<Stranger>(&peer);
        if (stranger != nullptr && !stranger->waitsFor)
            consider(after(stranger->since, strangerPatience));
    }
    return earliest;
}

void SessionHost::timePasses() {
    const SteadyTime now = services_.steadyTime();
    expireTickets(now);
    for (auto& [number, session] : sessions_) {
        session.timePasses(now);
        forgetDismissed(session);
    }
    forgetEnded(now);
    std::vector<PeerId> silent;
    for (const auto& [id, peer] : peers_) {
        const auto* const stranger = std::get_if<Stranger>(&peer);
        if (stranger != nullptr && !stranger->waitsFor && now - stranger->since >= strangerPatience)
            silent.push_back(id);
    }
    std::ranges::for_each(silent, [this](PeerId peer) { drop(peer); });
}

void SessionHost::expireTickets(SteadyTime now) {
    std::erase_if(tickets_, [&](const auto& ticket) {
        const bool expired = ticket.second.expiry <= now;
        if (expired)
            services_.tickets.remove(ticket.second.file);
        return expired;
    });
}

/// Forgets the sessions without viewers that ended `memory` ago, and the first-started ended ones
/// while there are more than `maxEnded`.
void SessionHost::forgetEnded(SteadyTime now) {
    auto ended = std::ranges::count_if(
        sessions_, [](const auto& session) { return session.second.endedSince().has_value(); });
    for (auto session = sessions_.begin(); session != sessions_.end();) {
        const auto since = session->second.endedSince();
        const bool forget =
            since && session->second.viewerCount() == 0
            && (now - *since >= TerminalSession::memory || std::cmp_greater(ended, maxEnded));
        if (!forget) {
            ++session;
            continue;
        }
        --ended;
        session = sessions_.erase(session);
    }
}

std::string SessionHost::randomHex(std::size_t bytes) const {
    constexpr std::string_view digits = "0123456789abcdef";
    Bytes random(bytes);
    services_.random(random);
    std::string text;
    for (const std::uint8_t byte : random) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

/// Returns 256 random bits in 43 characters.
std::string SessionHost::randomToken() const {
    Bytes random(tokenBytes);
    services_.random(random);
    std::string token = Base64::encode(random);
    token.pop_back(); // the padding
    std::ranges::replace(token, '+', '-');
    std::ranges::replace(token, '/', '_');
    return token;
}

} // namespace velmo
