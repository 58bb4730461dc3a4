#pragma once

#include "core/support/Bytes.h"
#include "phone/PhoneCalls.h"
#include "sessions/SessionCalls.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmo {

/// The frames of one session, from and to the session host. Nothing is called back once the object
/// is gone.
class SessionStream {
public:
    /// Called with what one `read` has got; empty when the host has closed the stream.
    using OnRead = std::function<void(ByteView bytes)>;

    virtual ~SessionStream() = default;

    /// Reads at least one byte and at most so many, once.
    virtual void read(std::size_t most, OnRead done) = 0;

    /// Writes a copy of the bytes, behind those that wait already.
    virtual void write(ByteView bytes, std::function<void()> done) = 0;
};

/// The way to the session host. Every function calls back exactly once, never before it returns,
/// and never after the link is gone.
class SessionLink {
public:
    /// Called with the host's reply; absent if no host answers.
    using OnReply = std::function<void(std::optional<SessionReplyLine> reply)>;

    /// Called with the stream, or else with the reason why the host refused it.
    using OnStream =
        std::function<void(std::expected<std::unique_ptr<SessionStream>, std::string> stream)>;

    virtual ~SessionLink() = default;

    /// Makes a call other than start and stream.
    virtual void call(const SessionCallLine& call, OnReply done) = 0;

    /// Starts what the page asks for in a new session, and a session host if none serves.
    virtual void start(const PhoneCallLine& wanted, OnReply done) = 0;

    /// Joins a session; with `viewOnly` the host takes nothing of the stream's frames.
    virtual void watch(const std::string& session, bool viewOnly, OnStream done) = 0;
};

} // namespace velmo
