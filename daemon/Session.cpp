#include "daemon/Session.h"

#include "daemon/Guard.h"

#include <utility>

namespace velmo {

Session::Session(std::weak_ptr<Guard> owner, std::weak_ptr<ClientConnection> connection)
    : owner_(std::move(owner)), connection_(std::move(connection)) {
}

std::shared_ptr<VelmoPowerProtocol> Session::make(std::weak_ptr<Guard> owner,
                                                  std::weak_ptr<ClientConnection> connection) {
    return std::make_shared<Session>(std::move(owner), std::move(connection));
}

void Session::hold(std::int64_t batteryFloor, HoldReply reply) {
    const auto guard = owner_.lock();
    const auto connection = connection_.lock();
    if (!guard || !connection) {
        reply(false, rawText(HoldRefusal::gone));
        return;
    }
    guard->queue().async([guard, who = connection->id(), batteryFloor, reply = std::move(reply)] {
        const Guard::HoldResult result = guard->hold(who, batteryFloor);
        reply(result.has_value(), result ? "" : rawText(result.error()));
    });
}

void Session::heartbeat(Reply reply) {
    const auto guard = owner_.lock();
    const auto connection = connection_.lock();
    if (!guard || !connection) {
        reply(false);
        return;
    }
    guard->queue().async([guard, who = connection->id(), reply = std::move(reply)] {
        reply(guard->heartbeat(who));
    });
}

void Session::release(Reply reply) {
    const auto guard = owner_.lock();
    if (!guard) {
        reply(false);
        return;
    }
    const auto connection = connection_.lock();
    const auto who = connection ? std::optional(connection->id()) : std::nullopt;
    guard->queue().async([guard, who, reply = std::move(reply)] { reply(guard->release(who)); });
}

void Session::report(ReportReply reply) {
    const auto guard = owner_.lock();
    const auto connection = connection_.lock();
    if (!guard || !connection) {
        reply(std::nullopt);
        return;
    }
    guard->queue().async(
        [guard, who = connection->id(), reply = std::move(reply)] { reply(guard->report(who)); });
}

} // namespace velmo
