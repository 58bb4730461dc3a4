#include "platform/phone/CommandDoor.h"

#include "phone/PhoneCommands.h"
#include "platform/posix/Io.h"
#include "platform/sessions/LocalSocket.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <chrono>
#include <utility>

namespace velmo {

namespace {

namespace net = boost::asio;
using Socket = net::local::stream_protocol::socket;
using Error = boost::system::error_code;

constexpr std::chrono::seconds patience{10};
constexpr timeval answerPatience{.tv_sec = 10, .tv_usec = 0};

/// A connection for one command and its reply.
class Command : public std::enable_shared_from_this<Command> {
public:
    explicit Command(Socket socket)
        : socket_(std::move(socket)), deadline_(socket_.get_executor()) {}

    void serve(const CommandDoor::Obey& obey) {
        deadline_.expires_after(patience);
        deadline_.async_wait([self = shared_from_this()](const Error& aborted) {
            Error ignored;
            if (!aborted)
                self->socket_.close(ignored);
        });
        net::async_read_until(
            socket_, net::dynamic_buffer(line_, maxPhoneCommand), '\n',
            [self = shared_from_this(), obey](const Error& error, std::size_t length) {
                if (error)
                    self->deadline_.cancel();
                else
                    self->reply(obey(self->line_.substr(0, length - 1)));
            });
    }

private:
    void reply(std::string text) {
        line_ = std::move(text);
        net::async_write(socket_, net::buffer(line_),
                         [self = shared_from_this()](const Error& /*error*/, std::size_t /*n*/) {
                             self->deadline_.cancel();
                         });
    }

    Socket socket_;
    net::steady_timer deadline_;
    std::string line_;
};

} // namespace

class CommandDoor::Impl : public std::enable_shared_from_this<Impl> {
public:
    Impl(net::io_context& context, Obey obey)
        : context_(context), listener_(context), obey_(std::move(obey)) {}

    bool open(const std::string& path) {
        Descriptor socket = LocalSocket::listen(path);
        if (!socket || ::fcntl(socket.get(), F_SETFL, O_NONBLOCK) != 0)
            return false;
        listener_.assign(socket.release());
        wait();
        return true;
    }

    void close() {
        Error ignored;
        listener_.close(ignored);
    }

private:
    void wait() {
        listener_.async_wait(net::posix::stream_descriptor::wait_read,
                             [self = shared_from_this()](const Error& error) {
                                 if (error)
                                     return;
                                 self->accept();
                                 self->wait();
                             });
    }

    void accept() {
        Descriptor socket = LocalSocket::accept(listener_.native_handle());
        if (socket)
            std::make_shared<Command>(
                Socket(context_, net::local::stream_protocol(), socket.release()))
                ->serve(obey_);
    }

    net::io_context& context_;
    net::posix::stream_descriptor listener_;
    Obey obey_;
};

CommandDoor::CommandDoor(net::io_context& context, Obey obey)
    : impl_(std::make_shared<Impl>(context, std::move(obey))) {
}

CommandDoor::~CommandDoor() {
    impl_->close();
}

bool CommandDoor::open(const std::string& path) {
    return impl_->open(path);
}

std::optional<std::string> askBridge(const std::string& path, std::string_view line) {
    const Descriptor socket = LocalSocket::connect(path);
    // The time limit keeps a bridge that does not answer from blocking the caller.
    if (!socket
        || ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &answerPatience,
                        sizeof answerPatience)
               != 0
        || !writeAll(socket.get(), std::string(line) + "\n"))
        return std::nullopt;
    return readToEnd(socket.get(), maxPhoneCommand);
}

} // namespace velmo
