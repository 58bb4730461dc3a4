#pragma once

#include "daemon/ClientConnection.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>

namespace velmo {

enum class UserId : std::uint32_t {};

/// Bounds how many connections each user may have open. The system checks a peer's signature for
/// each of its messages, not when it connects, so any process may open connections and keep silent:
/// those connections are dropped first. A client that made an admitted call has shown its signature
/// and keeps its place. Any member may be called on any thread.
class ConnectionPlaces {
public:
    /// Far more than a user's programs need.
    static constexpr std::size_t maxPerUser = 512;

    explicit ConnectionPlaces(std::size_t placesOfEachUser = maxPerUser)
        : placesOfEachUser_(placesOfEachUser) {}

    /// Gives a new connection a place. If its user has none left, the oldest connection of that
    /// user that never made an admitted call is dropped, by its `drop`; returns false if all of
    /// them did. Numbers of clients must grow with each connection.
    [[nodiscard]] bool take(ClientId client, UserId user, std::function<void()> drop);

    /// Notes that the system has admitted a call of the client.
    void admitted(ClientId client);

    /// Frees the client's place, if it has one.
    void leave(ClientId client);

private:
    struct Place {
        UserId user;
        bool hasCalled;
        std::function<void()> drop;
    };

    std::mutex mutex_;
    std::size_t placesOfEachUser_;
    std::map<ClientId, Place> places_; ///< oldest first
};

} // namespace velmo
