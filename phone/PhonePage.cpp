#include "phone/PhonePage.h"

#include <algorithm>
#include <utility>

namespace velmo {

template<class Callback>
auto PhonePage::ifAlive(Callback callback) {
    return [weak = weak_from_this(), callback = std::move(callback)](auto&&... results) {
        const auto page = weak.lock();
        if (page && page->connection_)
            callback(*page, std::forward<decltype(results)>(results)...);
    };
}

template<class Callback>
auto PhonePage::ifStillWatching(Callback callback) {
    return ifAlive(
        [number = watching_, callback = std::move(callback)](PhonePage& page, auto&&... results) {
            if (page.watching_ == number)
                callback(page, std::forward<decltype(results)>(results)...);
        });
}

template<class Callback>
auto PhonePage::counted(Callback callback) {
    ++callsUnderWay_;
    return ifAlive([callback = std::move(callback)](PhonePage& page, auto&&... results) {
        --page.callsUnderWay_;
        callback(page, std::forward<decltype(results)>(results)...);
        page.listen();
    });
}

PhonePage::PhonePage(const Services& services, Device device,
                     std::shared_ptr<PhoneConnection> connection)
    : services_(services),
      device_(std::move(device)),
      connection_(std::move(connection)),
      lastHeard_(services_.steadyTime()) {
}

void PhonePage::begin() {
    tell({.event = PhoneEvent::hello, .device = device_.name, .rights = device_.rights});
    listen();
}

void PhonePage::received(const PhoneMessage& message) {
    if (!connection_)
        return;
    isListening_ = false;
    lastHeard_ = services_.steadyTime();
    if (message.isText) {
        const auto call = readPhoneCall(message.content);
        if (!call)
            return end(PhoneClosing::malformed);
        made(*call);
    } else {
        typed(message.content);
    }
    listen();
}

void PhonePage::sent() {
    if (!connection_)
        return;
    toSend_.pop_front();
    sendNext();
    readOutput();
    listen();
}

void PhonePage::end(PhoneClosing why) {
    if (!connection_)
        return;
    leave();
    toSend_.clear();
    std::exchange(connection_, nullptr)->close(why);
    services_.closed(*this);
}

void PhonePage::made(const PhoneCallLine& call) {
    const bool mayView = call.call != PhoneCall::start && call.call != PhoneCall::end
                         && call.call != PhoneCall::awake;
    if (!mayView && device_.rights == DeviceRights::view)
        return refuse(call.call, PhoneRefusal::rights);
    switch (call.call) {
    case PhoneCall::list:
        return list();
    case PhoneCall::watch:
        return watch(*call.session);
    case PhoneCall::shown:
        return shown(*call.bytes);
    case PhoneCall::leave:
        leave();
        return tell({.event = PhoneEvent::left});
    case PhoneCall::start:
        return start(call);
    case PhoneCall::end:
        return endSession(*call.session);
    case PhoneCall::power:
        return power();
    case PhoneCall::awake:
        return turnAwake(*call.on);
    }
}

void PhonePage::list() {
    services_.sessions.call(
        {.call = SessionCall::list},
        counted([](PhonePage& page, std::optional<SessionReplyLine> reply) {
            if (!reply)
                return page.refuse(PhoneCall::list, PhoneRefusal::unreachable);
            page.tell(
                {.event = PhoneEvent::sessions,
                 .sessions = std::move(reply->sessions).value_or(std::vector<SessionEntry>())});
        }));
}

void PhonePage::watch(const std::string& session) {
    leave();
    services_.sessions.watch(session, device_.rights == DeviceRights::view,
                             counted([number = watching_, session](PhonePage& page, auto stream) {
                                 if (page.watching_ != number)
                                     return; // the page has changed its mind meanwhile
                                 if (!stream)
                                     return page.refuse(PhoneCall::watch, stream.error());
                                 page.watched(session, *std::move(stream));
                             }));
}

void PhonePage::watched(const std::string& session, std::unique_ptr<SessionStream> stream) {
    stream_ = std::move(stream);
    session_ = session;
    tell({.event = PhoneEvent::watching, .session = session});
    readOutput();
}

void PhonePage::shown(std::uint64_t bytes) {
    // A message that was on its way when the stream ended means nothing.
    if (!stream_)
        return;
    if (bytes < shown_ || bytes > relayed_)
        return end(PhoneClosing::malformed);
    shown_ = bytes;
    readOutput();
}

void PhonePage::leave() {
    ++watching_;
    stream_.reset();
    isReading_ = false;
    relayed_ = 0;
    shown_ = 0;
    typed_ = 0;
}

void PhonePage::start(const PhoneCallLine& call) {
    services_.sessions.start(
        call, counted([](PhonePage& page, const std::optional<SessionReplyLine>& reply) {
            if (!reply)
                return page.refuse(PhoneCall::start, PhoneRefusal::unreachable);
            if (!reply->ok)
                return page.refuse(PhoneCall::start, reply->reason.value_or(""));
            page.tell({.event = PhoneEvent::started, .session = reply->session});
        }));
}

void PhonePage::endSession(const std::string& session) {
    services_.sessions.call(
        {.call = SessionCall::end, .session = session},
        counted([session](PhonePage& page, const std::optional<SessionReplyLine>& reply) {
            if (!reply)
                return page.refuse(PhoneCall::end, PhoneRefusal::unreachable);
            if (!reply->ok)
                return page.refuse(PhoneCall::end, reply->reason.value_or(""));
            page.tell({.event = PhoneEvent::ending, .session = session});
        }));
}

void PhonePage::power() {
    if (services_.awake == nullptr)
        return refuse(PhoneCall::power, PhoneRefusal::unreachable);
    wantsPower_ = true;
    services_.awake->describe(counted([](PhonePage& page, const PhonePowerLine& power) {
        page.tell({.event = PhoneEvent::power, .power = power});
    }));
}

void PhonePage::turnAwake(bool on) {
    if (services_.awake != nullptr)
        services_.awake->turn(on);
    power();
}

void PhonePage::tellPower() {
    if (connection_ && wantsPower_ && callsUnderWay_ < maxCalls)
        power();
}

void PhonePage::typed(std::string_view frames) {
    if (device_.rights == DeviceRights::view)
        return end(PhoneClosing::malformed);
    if (!stream_)
        return;
    typed_ += frames.size();
    stream_->write(bytesOf(frames), ifStillWatching([size = frames.size()](PhonePage& page) {
                       page.typed_ -= size;
                       page.listen();
                   }));
}

void PhonePage::readOutput() {
    const std::uint64_t ahead = relayed_ - shown_;
    if (!stream_ || isReading_ || ahead >= window || toSend_.size() >= maxCalls)
        return;
    isReading_ = true;
    const std::size_t room = window - static_cast<std::size_t>(ahead);
    stream_->read(std::min(room, maxOutput),
                  ifStillWatching([](PhonePage& page, ByteView bytes) { page.outputRead(bytes); }));
}

void PhonePage::outputRead(ByteView bytes) {
    isReading_ = false;
    if (bytes.empty()) {
        leave();
        return tell({.event = PhoneEvent::gone, .session = session_});
    }
    relayed_ += bytes.size();
    send({.isText = false, .content = std::string(textOf(bytes))});
    readOutput();
}

void PhonePage::refuse(PhoneCall call, std::string_view reason) {
    tell({.event = PhoneEvent::refused, .call = call, .reason = std::string(reason)});
}

void PhonePage::tell(const PhoneEventLine& event) {
    // Only a number that is not finite has no JSON form, and an event from the host has none.
    send({.isText = true, .content = encodeJson(event, Slashes::plain).value_or("{}")});
}

void PhonePage::send(PhoneMessage message) {
    if (!connection_)
        return;
    toSend_.push_back(std::move(message));
    if (toSend_.size() == 1)
        sendNext();
}

void PhonePage::sendNext() {
    if (!toSend_.empty())
        connection_->send(toSend_.front());
}

/// Waits for the page's next message, unless the page has to wait for us.
void PhonePage::listen() {
    if (!connection_ || isListening_ || typed_ > maxTyped
        || callsUnderWay_ + toSend_.size() >= maxCalls)
        return;
    isListening_ = true;
    connection_->receive();
}

} // namespace velmo
