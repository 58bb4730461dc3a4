#include "platform/phone/HttpDoors.h"

#include "core/support/BigEndian.h"
#include "platform/sessions/SystemRandom.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <deque>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velmo {

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using net::ip::tcp;
using Error = beast::error_code;
using WebSocket = websocket::stream<beast::tcp_stream, false>;
using Request = http::request<http::string_body>;

constexpr std::size_t maxHeader = 8192; ///< bytes
constexpr std::chrono::milliseconds acceptPause{100};
constexpr std::chrono::seconds closePatience{1};
constexpr int portTries = 64;
constexpr unsigned firstPort = 20000;
constexpr unsigned ports = 10000;

std::uint16_t anyPort() {
    std::array<std::uint8_t, 4> bytes{};
    fillWithRandomBytes(bytes);
    return static_cast<std::uint16_t>(firstPort + BigEndian::read(bytes) % ports);
}

std::string_view plain(beast::string_view text) {
    return {text.data(), text.size()};
}

/// Returns the header's value; "" if the request has it several times.
std::optional<std::string_view> header(const Request& request, http::field name) {
    if (request.count(name) == 0)
        return std::nullopt;
    return request.count(name) == 1 ? plain(request[name]) : std::string_view();
}

HttpRequest plain(const Request& request) {
    return {.method = plain(request.method_string()),
            .target = plain(request.target()),
            .host = header(request, http::field::host).value_or(""),
            .origin = header(request, http::field::origin),
            .cookie = header(request, http::field::cookie).value_or(""),
            .contentType = header(request, http::field::content_type).value_or(""),
            .ifNoneMatch = header(request, http::field::if_none_match).value_or(""),
            .body = request.body()};
}

http::response<http::string_body> encoded(HttpReply reply, const Request& request) {
    http::response<http::string_body> response(http::status(reply.status), request.version());
    for (const HttpHeader& each : replyHeaders)
        response.insert(beast::string_view(each.name.data(), each.name.size()),
                        beast::string_view(each.value.data(), each.value.size()));
    response.set(http::field::content_type,
                 beast::string_view(reply.contentType.data(), reply.contentType.size()));
    response.set(http::field::cache_control, reply.tag.empty() ? "no-store" : "no-cache");
    if (!reply.tag.empty())
        response.set(http::field::etag, beast::string_view(reply.tag.data(), reply.tag.size()));
    if (!reply.setCookie.empty())
        response.set(http::field::set_cookie, reply.setCookie);
    if (!reply.gzipped.empty())
        response.set(http::field::content_encoding, "gzip");
    response.body() =
        reply.gzipped.empty() ? std::move(reply.text) : std::string(textOf(reply.gzipped));
    response.keep_alive(request.keep_alive());
    response.prepare_payload();
    if (request.method() == http::verb::head)
        response.body().clear(); // the length stays
    return response;
}

/// The WebSocket of one page.
class WebSocketPage final : public PhoneConnection,
                            public std::enable_shared_from_this<WebSocketPage> {
public:
    WebSocketPage(beast::tcp_stream stream, PhoneBridge& bridge)
        : bridge_(bridge), socket_(std::move(stream)), deadline_(socket_.get_executor()) {
        beast::get_lowest_layer(socket_).expires_never();
        socket_.set_option({.handshake_timeout = std::chrono::seconds(HttpDoors::patience),
                            .idle_timeout = websocket::stream_base::none(),
                            .keep_alive_pings = false});
        socket_.read_message_max(maxPhoneMessage);
        socket_.auto_fragment(false);
    }

    void accept(const Request& request, const std::string& cookie) {
        socket_.async_accept(request, [self = shared_from_this(), cookie](const Error& error) {
            if (!error)
                self->page_ = self->bridge_.open(cookie, self);
        });
    }

    void send(PhoneMessage message) override {
        sending_ = std::move(message.content);
        socket_.text(message.isText);
        socket_.async_write(net::buffer(sending_),
                            [self = shared_from_this()](const Error& error, std::size_t /*size*/) {
                                if (error)
                                    self->gone();
                                else if (self->page_)
                                    self->page_->sent();
                            });
    }

    void receive() override {
        socket_.async_read(
            received_, [self = shared_from_this()](const Error& error, std::size_t /*size*/) {
                if (error)
                    return self->gone();
                if (!self->page_)
                    return;
                PhoneMessage message{.isText = self->socket_.got_text(),
                                     .content = beast::buffers_to_string(self->received_.data())};
                self->received_.consume(self->received_.size());
                self->page_->received(message);
            });
    }

    void close(PhoneClosing why) override {
        page_.reset();
        // A peer that does not read holds the connection no longer than this.
        deadline_.expires_after(closePatience);
        deadline_.async_wait([self = shared_from_this()](const Error& aborted) {
            if (!aborted)
                beast::get_lowest_layer(self->socket_).close();
        });
        socket_.async_close(
            static_cast<websocket::close_code>(why),
            [self = shared_from_this()](const Error& /*error*/) { self->deadline_.cancel(); });
    }

private:
    void gone() {
        if (const auto page = std::exchange(page_, nullptr))
            bridge_.gone(page);
    }

    PhoneBridge& bridge_;
    WebSocket socket_;
    net::steady_timer deadline_;
    std::shared_ptr<PhonePage> page_; ///< null before it is open, and once it is closed
    std::string sending_;
    beast::flat_buffer received_;
};

} // namespace

class HttpDoors::Impl : public std::enable_shared_from_this<Impl> {
public:
    explicit Impl(net::io_context& context) : context_(context) {}

    bool takeBoth(std::uint16_t port) {
        doors_.clear();
        for (const auto& [address, isRequired] :
             {std::pair(net::ip::address(net::ip::address_v4::loopback()), true),
              std::pair(net::ip::address(net::ip::address_v6::loopback()), false)}) {
            Error error;
            auto door = std::make_unique<Door>(context_);
            listen(door->acceptor, {address, port}, error);
            if (!error)
                doors_.push_back(std::move(door));
            else if (isRequired || error == net::error::address_in_use)
                return false;
        }
        return true;
    }

    [[nodiscard]] std::uint16_t port() const {
        return doors_.front()->acceptor.local_endpoint().port();
    }

    void serve(PhoneBridge& bridge) {
        bridge_ = &bridge;
        for (const auto& door : doors_)
            accept(*door);
    }

    void stop() {
        isStopped_ = true;
        for (const auto& door : doors_) {
            Error ignored;
            door->acceptor.close(ignored);
            door->pause.cancel();
        }
        for (const auto& weak : std::exchange(requests_, {})) {
            if (const auto request = weak.lock())
                request->drop();
        }
    }

private:
    struct Door {
        explicit Door(net::io_context& context) : acceptor(context), pause(context) {}

        tcp::acceptor acceptor;
        net::steady_timer pause;
    };

    /// A connection with one request after another, until one opens a WebSocket.
    class Requests : public std::enable_shared_from_this<Requests> {
    public:
        Requests(tcp::socket socket, PhoneBridge& bridge)
            : bridge_(bridge), stream_(std::move(socket)) {}

        void read() {
            parser_.emplace();
            parser_->header_limit(maxHeader);
            parser_->body_limit(PhoneBridge::maxBody);
            stream_.expires_after(std::chrono::seconds(patience));
            http::async_read(stream_, buffer_, *parser_,
                             [self = shared_from_this()](const Error& error, std::size_t /*size*/) {
                                 if (!error)
                                     self->answer();
                             });
        }

        void drop() { stream_.close(); }

    private:
        void answer() {
            const Request& request = parser_->get();
            if (!websocket::is_upgrade(request))
                return write(bridge_.answer(plain(request)));
            auto cookie = bridge_.mayOpen(plain(request));
            if (!cookie)
                return write(std::move(cookie.error()));
            std::make_shared<WebSocketPage>(std::move(stream_), bridge_)->accept(request, *cookie);
        }

        void write(HttpReply reply) {
            response_ = encoded(std::move(reply), parser_->get());
            serializer_.emplace(response_);
            serializer_->split(false);
            stream_.expires_after(std::chrono::seconds(patience));
            http::async_write(stream_, *serializer_,
                              [self = shared_from_this()](const Error& error, std::size_t /*n*/) {
                                  if (!error && self->response_.keep_alive())
                                      self->read();
                              });
        }

        PhoneBridge& bridge_;
        beast::tcp_stream stream_;
        beast::flat_buffer buffer_{maxHeader + PhoneBridge::maxBody};
        std::optional<http::request_parser<http::string_body>> parser_;
        http::response<http::string_body> response_;
        std::optional<http::response_serializer<http::string_body>> serializer_;
    };

    static void listen(tcp::acceptor& acceptor, const tcp::endpoint& endpoint, Error& error) {
        acceptor.open(endpoint.protocol(), error);
        if (!error)
            acceptor.set_option(net::socket_base::reuse_address(true), error);
        if (!error)
            acceptor.bind(endpoint, error);
        if (!error)
            acceptor.listen(net::socket_base::max_listen_connections, error);
    }

    void accept(Door& door) {
        door.acceptor.async_accept(
            [self = shared_from_this(), &door](const Error& error, tcp::socket socket) {
                if (self->isStopped_)
                    return;
                if (error)
                    return self->acceptLater(door); // mostly a lack of descriptors
                self->accepted(std::move(socket));
                self->accept(door);
            });
    }

    void acceptLater(Door& door) {
        door.pause.expires_after(acceptPause);
        door.pause.async_wait([self = shared_from_this(), &door](const Error& aborted) {
            if (!aborted && !self->isStopped_)
                self->accept(door);
        });
    }

    /// Serves a connection. The oldest one makes room for one too many: a browser that needs it
    /// again connects anew.
    void accepted(tcp::socket socket) {
        Error ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        std::erase_if(requests_, [](const auto& weak) { return weak.expired(); });
        if (requests_.size() >= maxRequests) {
            if (const auto oldest = requests_.front().lock())
                oldest->drop();
            requests_.pop_front();
        }
        auto requests = std::make_shared<Requests>(std::move(socket), *bridge_);
        requests_.push_back(requests);
        requests->read();
    }

    net::io_context& context_;
    PhoneBridge* bridge_ = nullptr;
    std::vector<std::unique_ptr<Door>> doors_;
    std::deque<std::weak_ptr<Requests>> requests_; ///< oldest first
    bool isStopped_ = false;
};

HttpDoors::HttpDoors(net::io_context& context) : impl_(std::make_shared<Impl>(context)) {
}

HttpDoors::~HttpDoors() {
    impl_->stop();
}

std::optional<std::uint16_t> HttpDoors::take(std::uint16_t port) {
    for (int tries = port == 0 ? portTries : 1; tries > 0; --tries) {
        if (impl_->takeBoth(port == 0 ? anyPort() : port))
            return impl_->port();
    }
    return std::nullopt;
}

void HttpDoors::serve(PhoneBridge& bridge) {
    impl_->serve(bridge);
}

} // namespace velmo
