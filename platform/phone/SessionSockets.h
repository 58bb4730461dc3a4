#pragma once

#include "phone/SessionLink.h"

#include <boost/asio/io_context.hpp>

#include <functional>
#include <memory>
#include <string>

namespace velmo {

/// Reaches the session host by its control socket, with a connection of its own for each call and
/// each stream. Everything happens on the thread that runs the context.
class SessionSockets final : public SessionLink {
public:
    struct Services {
        /// Returns the call that starts what a page asks for.
        std::function<SessionCallLine(const PhoneCallLine& wanted)> startCall;
        /// Starts a session host, which serves some time later or ends if another one serves.
        std::function<void()> startHost;
    };

    SessionSockets(boost::asio::io_context& context, Services services);
    ~SessionSockets() override;

    void call(const SessionCallLine& call, OnReply done) override;
    void start(const PhoneCallLine& wanted, OnReply done) override;
    void watch(const std::string& session, bool viewOnly, OnStream done) override;

private:
    class Line;
    class Stream;

    void whenHostServes(int triesLeft, std::function<void()> then);

    boost::asio::io_context& context_;
    Services services_;
    std::shared_ptr<bool> life_ = std::make_shared<bool>(); ///< gone with the link
};

} // namespace velmo
