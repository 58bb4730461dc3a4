/// NSXPCConnection.h and, below it, <xpc/connection.h>.

#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Foundation.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/ObjectiveC.h"
#include "lab/emulated-mac/shims/Security.h"
#include "lab/emulated-mac/shims/Shims.h"
#include "lab/emulated-mac/shims/WorkQueue.h"
#include "lab/emulated-mac/shims/XpcCall.h"
#include "lab/emulated-mac/shims/XpcWire.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace velmo {

namespace {

constexpr std::uint64_t privileged = 1 << 12; // NSXPCConnectionPrivileged

/// FoundationErrors.h.
enum ErrorCode : std::int64_t { interrupted = 4097, invalid = 4099, replyInvalid = 4101 };

struct Error : Object {
    std::int64_t code = 0;
};

FrameworkClass errorClass("NSError", &nsObject.object, sizeof(Error), {});

struct Interface : Object {
    const Protocol* protocol = nullptr;
};

Object* interfaceWith(Object* self, Selector, const Protocol* protocol);

FrameworkClass interfaceClass("NSXPCInterface", &nsObject.object, sizeof(Interface), {},
                              {method<interfaceWith>("interfaceWithProtocol:")});

Object* interfaceWith(Object* /*self*/, Selector /*selector*/, const Protocol* protocol) {
    auto* const made = allocate<Interface>(interfaceClass);
    made->protocol = protocol;
    return autorelease(made);
}

/// A call by this process that waits for its reply.
struct Outstanding {
    Block* reply;
    Block* failed;
    std::vector<std::string> types;
};

enum class State { suspended, resumed, invalidated };

/// A connection. The handlers, the replies and the exported object are called on `queue`, which
/// alone touches everything that is not set before the connection is resumed. The system keeps a
/// connection from its resumption until its invalidation.
struct Connection : Object {
    std::optional<std::string> service; ///< absent at the listener's end
    bool isSystemWide = false;
    Strong<Interface> exportedInterface;
    Strong<Interface> remoteInterface;
    Strong<Object> exported;
    Strong<Block> interruptionHandler;
    Strong<Block> invalidationHandler;
    std::optional<std::string> requirement;
    std::atomic<State> state = State::suspended;
    int socket = -1;
    std::optional<Identity> peer; ///< absent until the first message
    std::map<std::uint64_t, Outstanding> outstanding;
    std::uint64_t lastNumber = 0;
    WorkQueue queue;

    Connection() = default;

    /// "The connection must be invalidated before it is deallocated", and one that was never
    /// resumed can't be released either. A listener's connection that was not accepted is exempt:
    /// the system ends it.
    ~Connection() {
        if (state != State::invalidated && service)
            misuse("a connection is deallocated that is not invalidated");
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
};

struct Proxy : Object {
    Strong<Connection> connection;
    Strong<Block> failed;
};

/// Runs the work on the connection's queue, and keeps the connection until then.
void post(Connection* connection, std::function<void()> work) {
    retain(connection);
    connection->queue.async([connection, work = std::move(work)] {
        work();
        release(connection);
    });
}

void finish(const Outstanding& call, ErrorCode code) {
    auto* const error = allocate<Error>(errorClass);
    error->code = code;
    if (call.failed != nullptr)
        (*call.failed)(static_cast<Object*>(error));
    release(error);
    releaseBlock(call.reply);
    releaseBlock(call.failed);
}

void failOutstanding(Connection* connection, ErrorCode code) {
    for (const auto& [number, call] : std::exchange(connection->outstanding, {}))
        finish(call, code);
}

void closeSocket(Connection* connection) {
    // Only shut down, which ends the reader's wait. The reader then closes the socket.
    if (const int socket = std::exchange(connection->socket, -1); socket >= 0)
        ::shutdown(socket, SHUT_RDWR);
}

/// Invalidates the connection once, and releases the handlers with all that they keep.
void invalidateNow(Connection* connection) {
    if (connection->state.exchange(State::invalidated) == State::invalidated)
        return;
    closeSocket(connection);
    failOutstanding(connection, invalid);
    if (Block* const handler = connection->invalidationHandler.get())
        (*handler)();
    connection->invalidationHandler.set(nullptr);
    connection->interruptionHandler.set(nullptr);
    release(connection); // the system's reference
}

/// Handles the loss of the other side. A connection by name is only interrupted, because the
/// service's name leads to its next process: the next message connects anew.
void peerIsGone(Connection* connection) {
    if (connection->state == State::invalidated)
        return;
    if (!connection->service) {
        invalidateNow(connection);
        return;
    }
    closeSocket(connection);
    connection->peer.reset();
    failOutstanding(connection, interrupted);
    if (Block* const handler = connection->interruptionHandler.get())
        (*handler)();
}

void reply(Connection* connection, const std::string& number, const std::optional<Words>& values) {
    Words words = {values ? "reply" : "lost", number};
    if (values)
        words.insert(words.end(), values->begin(), values->end());
    if (connection->socket >= 0)
        sendWords(connection->socket, words);
}

/// Calls the exported object. A selector that the exported interface lacks, or arguments of other
/// types, end the connection.
void perform(Connection* connection, const Words& words) {
    const Pool forArguments(Pool::Kind::explicitly);
    const Interface* const interface = connection->exportedInterface.get();
    const auto types = interface == nullptr || words.size() < 3
                           ? std::nullopt
                           : typesOf(interface->protocol, words[2]);
    auto values = types ? decoded(types->arguments, words, 3) : std::nullopt;
    if (!values) {
        note("XPC: a call that can't be decoded; the connection ends");
        invalidateNow(connection);
        return;
    }
    Block* block = nullptr;
    if (types->reply) {
        retain(connection);
        block = makeReplyBlock(
            *types->reply, [connection, number = words[1]](std::optional<Words> result) {
                post(connection, [connection, number, result = std::move(result)] {
                    reply(connection, number, result);
                });
                release(connection);
            });
        values->at(types->arguments.size()) = reinterpret_cast<std::uintptr_t>(block);
    }
    const Pool none(Pool::Kind::lastResort); // that the program might count on
    const std::string& selector = words[2];
    const auto [a, b, c, d, e, f] = *values;
    send<void>(connection->exported.get(), selector.c_str(), a, b, c, d, e, f);
    releaseBlock(block);
}

void takeReply(Connection* connection, const Words& words) {
    const auto number = std::strtoull(words.at(1).c_str(), nullptr, 10);
    const auto found = connection->outstanding.find(number);
    if (found == connection->outstanding.end())
        misuse("a reply to no call");
    const Pool forArguments(Pool::Kind::explicitly);
    const Outstanding call = found->second;
    connection->outstanding.erase(found);
    const auto values = words.front() == "reply" ? decoded(call.types, words, 2) : std::nullopt;
    if (!values) {
        finish(call, replyInvalid);
        return;
    }
    const Pool none(Pool::Kind::lastResort);
    const auto [a, b, c, d, e, f] = *values;
    (*call.reply)(a, b, c, d, e, f);
    releaseBlock(call.reply);
    releaseBlock(call.failed);
}

/// Handles a message. The peer must satisfy the requirement at every message; if not, the
/// connection is invalidated.
void takeMessage(Connection* connection, const Words& words) {
    if (connection->state != State::resumed || words.empty())
        return;
    if (words.front() == "identity") {
        connection->peer = Identity{.team = words.at(1), .identifier = words.at(2)};
        return;
    }
    const Identity peer = connection->peer.value_or(Identity{});
    if (connection->requirement && satisfies(*connection->requirement, peer) != true) {
        note("XPC: a message from \"" + peer.identifier + "\" of team \"" + peer.team
             + "\", against the requirement; the connection ends");
        invalidateNow(connection);
    } else if (words.front() == "call") {
        perform(connection, words);
    } else {
        takeReply(connection, words);
    }
}

/// Waits for messages until the socket ends, then passes the end on.
void read(Connection* connection, int socket) {
    while (auto words = receiveWords(socket)) {
        post(connection,
             [connection, words = std::move(*words)] { takeMessage(connection, words); });
    }
    post(connection, [connection, socket] {
        if (connection->socket == socket) {
            connection->socket = -1;
            peerIsGone(connection);
        }
        ::close(socket);
        release(connection); // the reader's reference
    });
}

void startReading(Connection* connection) {
    const Identity self = ownIdentity();
    sendWords(connection->socket, {"identity", self.team, self.identifier});
    retain(connection);
    std::thread([connection, socket = connection->socket] { read(connection, socket); }).detach();
}

/// Looks the service up, as the first message does.
bool connectNow(Connection* connection) {
    if (connection->socket >= 0)
        return true;
    if (!connection->service || !connection->isSystemWide)
        return false;
    connection->socket = connectTo(socketOf(*connection->service));
    if (connection->socket < 0)
        return false;
    startReading(connection);
    return true;
}

void call(Connection* connection, const Outstanding& outstanding, Words words) {
    if (connection->state == State::invalidated) {
        finish(outstanding, invalid);
        return;
    }
    if (connection->state != State::resumed)
        endRun("a message over a suspended connection");
    const std::uint64_t number = ++connection->lastNumber;
    connection->outstanding[number] = outstanding;
    if (!connectNow(connection)) {
        note("XPC: no service " + connection->service.value_or("(of this process)"));
        failOutstanding(connection, invalid);
        invalidateNow(connection);
        return;
    }
    words[1] = std::to_string(number);
    sendWords(connection->socket, words); // the reader notices a failure too
}

/// Sends the message that the proxy has got to the other side.
std::uint64_t forward(Object* self, Selector selector, std::uint64_t a, std::uint64_t b,
                      std::uint64_t c, std::uint64_t d, std::uint64_t e, std::uint64_t f) {
    auto* const proxy = static_cast<Proxy*>(self);
    Connection* const connection = proxy->connection.get();
    const Interface* const interface = connection->remoteInterface.get();
    const auto types = interface == nullptr ? std::nullopt : typesOf(interface->protocol, selector);
    if (!types)
        misuse(std::string("the remote interface has no ") + selector);
    const Registers registers = {a, b, c, d, e, f};
    Words words = {"call", "", selector};
    for (const std::string& word : encoded(types->arguments, registers))
        words.push_back(word);
    Block* block = nullptr;
    if (types->reply) {
        block = reinterpret_cast<Block*>(registers.at(types->arguments.size()));
        if (block == nullptr || (block->flags & Block::hasSignature) == 0)
            misuse("a reply block without a signature goes over XPC");
    }
    const Outstanding outstanding{.reply = copyBlock(block),
                                  .failed = copyBlock(proxy->failed.get()),
                                  .types = types->reply.value_or(std::vector<std::string>{})};
    post(connection, [connection, outstanding, words] { call(connection, outstanding, words); });
    return 0;
}

FrameworkClass proxyClass("__NSXPCDistantObject", &nsObject.object, sizeof(Proxy),
                          {constructing<Proxy>(), destructing<Proxy>()});

const bool forwardsToProxies = (forwardMessagesTo(proxyClass, forward), true);

Object* proxyFor(Connection* self, Selector /*selector*/, Block* failed) {
    auto* const proxy = allocate<Proxy>(proxyClass);
    proxy->connection.set(self);
    proxy->failed.set(failed);
    return autorelease(proxy);
}

Object* initWithService(Connection* self, Selector /*selector*/, const Object* name,
                        std::uint64_t options) {
    self->service = textOf(name);
    self->isSystemWide = (options & privileged) != 0;
    return self;
}

/// Returns the peer's process id; 0 without a peer.
std::int32_t peerProcess(Connection* self, Selector /*selector*/) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(self->socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

/// Returns the peer's user. The user that the peer believes it runs as can't be seen from here, so
/// the real one counts.
std::uint32_t peerUser(Connection* self, Selector /*selector*/) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(self->socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.uid : 0;
}

template<auto Member, class T>
void setMember(Connection* self, Selector /*selector*/, T* value) {
    (self->*Member).set(value);
}

/// Sets the requirement. "If the requirement is malformed, an exception is thrown"; a second call
/// is an error. EMULATED_REQUIREMENTS=malformed makes every requirement malformed.
void setRequirement(Connection* self, Selector /*selector*/, const Object* text) {
    if (self->requirement)
        misuse("a connection gets a second requirement");
    const std::string requirement = textOf(text);
    note("XPC: requirement " + requirement);
    if (setting("EMULATED_REQUIREMENTS") == "malformed" || !satisfies(requirement, {}))
        throwException("NSInvalidArgumentException", "not a valid requirement");
    self->requirement = requirement;
}

void resume(Connection* self, Selector /*selector*/) {
    if (self->state.exchange(State::resumed) != State::suspended)
        misuse("a connection is resumed that is not suspended");
    retain(self);
    if (self->socket >= 0)
        startReading(self);
}

void invalidate(Connection* self, Selector /*selector*/) {
    if (self->state == State::suspended)
        misuse("a connection is invalidated that was never resumed");
    post(self, [self] { invalidateNow(self); });
}

FrameworkClass connectionClass(
    "NSXPCConnection", &nsObject.object, sizeof(Connection),
    {constructing<Connection>(), destructing<Connection>(),
     method<initWithService>("initWithMachServiceName:options:"), method<invalidate>("invalidate"),
     method<peerProcess>("processIdentifier"), method<peerUser>("effectiveUserIdentifier"),
     method<proxyFor>("remoteObjectProxyWithErrorHandler:"), method<resume>("resume"),
     method<setRequirement>("setCodeSigningRequirement:"),
     method<setMember<&Connection::exportedInterface, Interface>>("setExportedInterface:"),
     method<setMember<&Connection::exported, Object>>("setExportedObject:"),
     method<setMember<&Connection::interruptionHandler, Block>>("setInterruptionHandler:"),
     method<setMember<&Connection::invalidationHandler, Block>>("setInvalidationHandler:"),
     method<setMember<&Connection::remoteInterface, Interface>>("setRemoteObjectInterface:")});

// The listener. launchd keeps the service's port: EMULATED_SERVICE names the service that this
// process was started for, EMULATED_PORT the descriptor of its socket.

struct Listener : Object {
    std::string service;
    Weak delegate;
    WorkQueue queue;
};

Object* initListener(Listener* self, Selector /*selector*/, const Object* name) {
    self->service = textOf(name);
    return self;
}

void setDelegate(Listener* self, Selector /*selector*/, Object* delegate) {
    self->delegate.set(delegate);
}

constexpr Selector acceptSelector = "listener:shouldAcceptNewConnection:";

/// Offers a connection to the delegate. A connection that the delegate refuses is closed, as is one
/// without a delegate.
void offer(Listener* listener, int socket) {
    auto* const connection = allocate<Connection>(connectionClass);
    connection->socket = socket;
    Object* const delegate = listener->delegate.retained();
    const bool isAccepted =
        delegate != nullptr
        && (send<std::uint32_t>(delegate, acceptSelector, static_cast<Object*>(listener),
                                static_cast<Object*>(connection))
            & 0xFF)
               != 0;
    release(delegate);
    note(isAccepted ? "XPC: a connection is accepted" : "XPC: a connection is refused");
    if (isAccepted && connection->state == State::suspended)
        misuse("an accepted connection is not resumed");
    if (!isAccepted && connection->state != State::suspended)
        misuse("a refused connection is resumed");
    if (!isAccepted)
        ::close(std::exchange(connection->socket, -1));
    release(connection);
}

void accept(Listener* listener, int port) {
    while (true) {
        const int socket = ::accept4(port, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0)
            listener->queue.async([listener, socket] { offer(listener, socket); });
    }
}

void resumeListener(Listener* self, Selector /*selector*/) {
    if (setting("EMULATED_SERVICE") != self->service)
        misuse("launchd does not keep the name " + self->service + " for this process");
    note("listens as " + self->service);
    const int port = std::atoi(setting("EMULATED_PORT").value_or("-1").c_str());
    ::fcntl(port, F_SETFD, FD_CLOEXEC);
    retain(self);
    std::thread(accept, self, port).detach();
}

FrameworkClass listenerClass("NSXPCListener", &nsObject.object, sizeof(Listener),
                             {constructing<Listener>(), destructing<Listener>(),
                              method<initListener>("initWithMachServiceName:"),
                              method<resumeListener>("resume"),
                              method<setDelegate>("setDelegate:")});

constexpr auto shims = std::to_array<Shim>({
    {"_OBJC_CLASS_$_NSXPCConnection", classAddress<connectionClass>},
    {"_OBJC_CLASS_$_NSXPCInterface", classAddress<interfaceClass>},
    {"_OBJC_CLASS_$_NSXPCListener", classAddress<listenerClass>},
});

} // namespace

Shims xpcShims() {
    return shims;
}

} // namespace velmo
