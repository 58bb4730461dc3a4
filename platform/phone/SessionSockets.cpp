#include "platform/phone/SessionSockets.h"

#include "platform/posix/Descriptor.h"
#include "platform/sessions/LocalSocket.h"
#include "platform/sessions/PrivateFolder.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

#include <chrono>
#include <deque>
#include <utility>

namespace velmo {

namespace {

namespace net = boost::asio;
using Socket = net::local::stream_protocol::socket;
using Error = boost::system::error_code;

constexpr std::chrono::seconds replyPatience{10};
constexpr std::chrono::milliseconds startPause{50};
constexpr int startTries = 100; // five seconds in all
constexpr int triesPerStart = 10;

/// Connects to the session host, which is quick or fails at once; absent if no host serves.
std::optional<Socket> connectToHost(net::io_context& context) {
    const auto folder = PrivateFolder::locate();
    if (!folder)
        return std::nullopt;
    Descriptor connected =
        LocalSocket::connect(*folder + "/" + std::string(PrivateFolder::controlSocket));
    if (!connected)
        return std::nullopt;
    return Socket(context, net::local::stream_protocol(), connected.release());
}

} // namespace

/// A call on a connection of its own, which ends with the reply or after the patience.
class SessionSockets::Line : public std::enable_shared_from_this<Line> {
public:
    using Done = std::function<void(Line&, std::optional<SessionReplyLine> reply)>;

    Line(Socket socket, Done done)
        : socket_(std::move(socket)), patience_(socket_.get_executor()), done_(std::move(done)) {}

    void ask(const SessionCallLine& call) {
        toSend_ = encodeJson(call).value_or("{}") + "\n";
        patience_.expires_after(replyPatience);
        patience_.async_wait([self = shared_from_this()](const Error& aborted) {
            if (!aborted)
                self->finish(std::nullopt);
        });
        net::async_write(socket_, net::buffer(toSend_),
                         [self = shared_from_this()](const Error& error, std::size_t /*sent*/) {
                             error ? self->finish(std::nullopt) : self->readReply();
                         });
    }

    /// Hands the connection over, with the bytes that came behind the reply.
    std::pair<Socket, std::string> release() { return {std::move(socket_), std::move(received_)}; }

private:
    void readReply() {
        net::async_read_until(socket_, net::dynamic_buffer(received_, maxSessionLine), '\n',
                              [self = shared_from_this()](const Error& error, std::size_t length) {
                                  if (error)
                                      return self->finish(std::nullopt);
                                  auto reply = decodeRecord<SessionReplyLine>(
                                      std::string_view(self->received_).substr(0, length));
                                  self->received_.erase(0, length);
                                  self->finish(std::move(reply));
                              });
    }

    void finish(std::optional<SessionReplyLine> reply) {
        patience_.cancel();
        if (const Done done = std::exchange(done_, nullptr))
            done(*this, std::move(reply));
        Error ignored;
        socket_.close(ignored);
    }

    Socket socket_;
    net::steady_timer patience_;
    Done done_;
    std::string toSend_;
    std::string received_;
};

/// The frames of a session. What happens after the stream has been given up happens to `State`,
/// which calls nothing back any more.
class SessionSockets::Stream final : public SessionStream {
public:
    Stream(Socket socket, std::string received)
        : state_(std::make_shared<State>(std::move(socket), std::move(received))) {}

    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    ~Stream() override {
        state_->isGivenUp = true;
        Error ignored;
        state_->socket.close(ignored);
    }

    void read(std::size_t most, OnRead done) override {
        State& state = *state_;
        if (!state.received.empty()) {
            state.room.assign(state.received, 0, most);
            state.received.erase(0, state.room.size());
            net::post(state.socket.get_executor(),
                      [keep = state_, done = std::move(done)] { keep->tell(done); });
            return;
        }
        state.room.resize(most);
        state.socket.async_read_some(
            net::buffer(state.room),
            [keep = state_, done = std::move(done)](const Error& error, std::size_t count) {
                keep->room.resize(error ? 0 : count);
                keep->tell(done);
            });
    }

    void write(ByteView bytes, std::function<void()> done) override {
        state_->toWrite.emplace_back(std::string(textOf(bytes)), std::move(done));
        if (state_->toWrite.size() == 1)
            writeNext(state_);
    }

private:
    struct State {
        State(Socket connected, std::string rest)
            : socket(std::move(connected)), received(std::move(rest)) {}

        void tell(const OnRead& done) const {
            if (!isGivenUp)
                done(bytesOf(room));
        }

        Socket socket;
        std::string received; ///< read already, behind the reply
        std::string room;
        std::deque<std::pair<std::string, std::function<void()>>> toWrite;
        bool isGivenUp = false;
    };

    static void writeNext(const std::shared_ptr<State>& state) {
        net::async_write(state->socket, net::buffer(state->toWrite.front().first),
                         [state](const Error& error, std::size_t /*sent*/) {
                             // The end of the stream comes to the reader.
                             if (error || state->isGivenUp)
                                 return;
                             const auto done = std::move(state->toWrite.front().second);
                             state->toWrite.pop_front();
                             if (!state->toWrite.empty())
                                 writeNext(state);
                             done();
                         });
    }

    std::shared_ptr<State> state_;
};

SessionSockets::SessionSockets(net::io_context& context, Services services)
    : context_(context), services_(std::move(services)) {
}

SessionSockets::~SessionSockets() = default;

void SessionSockets::call(const SessionCallLine& call, OnReply done) {
    const auto alive = [life = std::weak_ptr(life_),
                        done = std::move(done)](std::optional<SessionReplyLine> reply) {
        if (life.lock())
            done(std::move(reply));
    };
    auto socket = connectToHost(context_);
    if (!socket) {
        net::post(context_, [alive] { alive(std::nullopt); });
        return;
    }
    std::make_shared<Line>(*std::move(socket), [alive](Line& /*line*/, auto reply) {
        alive(std::move(reply));
    })->ask(call);
}

void SessionSockets::start(const PhoneCallLine& wanted, OnReply done) {
    whenHostServes(startTries, [this, call = services_.startCall(wanted), done = std::move(done)] {
        this->call(call, done);
    });
}

/// Waits until a host can be connected to, or until the tries are used up. A host that is just
/// ending keeps a new one from serving, so the start is repeated.
void SessionSockets::whenHostServes(int triesLeft, std::function<void()> then) {
    if (triesLeft == 0 || connectToHost(context_))
        return net::post(context_, [life = std::weak_ptr(life_), then = std::move(then)] {
            if (life.lock())
                then();
        });
    if (triesLeft % triesPerStart == 0)
        services_.startHost();
    const auto pause = std::make_shared<net::steady_timer>(context_, startPause);
    pause->async_wait([this, life = std::weak_ptr(life_), pause, triesLeft,
                       then = std::move(then)](const Error& aborted) {
        if (!aborted && life.lock())
            whenHostServes(triesLeft - 1, then);
    });
}

void SessionSockets::watch(const std::string& session, bool viewOnly, OnStream done) {
    const auto alive = [life = std::weak_ptr(life_), done = std::move(done)](auto stream) {
        if (life.lock())
            done(std::move(stream));
    };
    const auto refuse = [alive](std::string_view reason) {
        alive(std::expected<std::unique_ptr<SessionStream>, std::string>(std::unexpect,
                                                                         std::string(reason)));
    };
    auto socket = connectToHost(context_);
    if (!socket) {
        net::post(context_, [refuse] { refuse(PhoneRefusal::unreachable); });
        return;
    }
    std::make_shared<Line>(*std::move(socket), [alive, refuse](
                                                   Line& line,
                                                   const std::optional<SessionReplyLine>& reply) {
        if (!reply)
            return refuse(PhoneRefusal::unreachable);
        if (!reply->ok)
            return refuse(reply->reason.value_or(""));
        auto [connection, rest] = line.release();
        alive(std::expected<std::unique_ptr<SessionStream>, std::string>(
            std::make_unique<Stream>(std::move(connection), std::move(rest))));
    })->ask({.call = SessionCall::stream, .session = session, .viewOnly = viewOnly});
}

} // namespace velmo
