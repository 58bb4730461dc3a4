#include "daemon/ConnectionPlaces.h"

#include <algorithm>
#include <utility>

namespace velmo {

bool ConnectionPlaces::take(ClientId client, UserId user, std::function<void()> drop) {
    std::function<void()> dropOldest;
    {
        const std::lock_guard lock(mutex_);
        const auto ofUser = [user](const auto& entry) { return entry.second.user == user; };
        if (std::cmp_greater_equal(std::ranges::count_if(places_, ofUser), placesOfEachUser_)) {
            const auto oldest = std::ranges::find_if(places_, [&](const auto& entry) {
                return ofUser(entry) && !entry.second.hasCalled;
            });
            if (oldest == places_.end())
                return false;
            dropOldest = std::move(oldest->second.drop);
            places_.erase(oldest);
        }
        places_.emplace(client, Place{.user = user, .hasCalled = false, .drop = std::move(drop)});
    }
    // Called without the lock, because the handler may call `leave` at once.
    if (dropOldest)
        dropOldest();
    return true;
}

void ConnectionPlaces::admitted(ClientId client) {
    const std::lock_guard lock(mutex_);
    if (const auto place = places_.find(client); place != places_.end())
        place->second.hasCalled = true;
}

void ConnectionPlaces::leave(ClientId client) {
    const std::lock_guard lock(mutex_);
    places_.erase(client);
}

} // namespace velmo
