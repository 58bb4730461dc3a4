#pragma once

#include "core/power/HoldReport.h"
#include "core/support/Time.h"
#include "daemon/ClientConnection.h"

#include <map>
#include <optional>

namespace velmo {

/// Remembers the holder and how holds ended, for the clients' reports. The guard writes into the
/// ledger as things happen, and no rule of the guard reads it.
class HoldLedger {
public:
    /// Adds a client. What the system does not tell of its process is absent.
    void connected(ClientId who, std::optional<std::int64_t> processId,
                   std::optional<std::string> program);

    /// Forgets a client that is gone, and how its holds ended.
    void disconnected(ClientId who);

    /// Notes that a hold was granted. A renewed hold keeps its date.
    void began(ClientId who, WallTime now);

    /// Notes that the hold in force, if any, has ended.
    void ended(HoldEnding how, WallTime now);

    /// Notes how the last hold of an earlier run of the daemon ended.
    void endedEarlier(const HoldEnd& end) { lastEnd_ = end; }

    /// Returns the holder, without what the guard itself knows: floor, age, and which client asks.
    [[nodiscard]] std::optional<HolderReport> holder() const;

    /// Returns how the last hold of that client ended.
    [[nodiscard]] std::optional<HoldEnd> lastEndOf(ClientId who) const;

    /// Returns how the last hold of any client ended.
    [[nodiscard]] const std::optional<HoldEnd>& lastEnd() const { return lastEnd_; }

private:
    struct Client {
        std::optional<std::int64_t> processId;
        std::optional<std::string> program;
        std::optional<HoldEnd> lastEnd;
    };

    struct Hold {
        ClientId who;
        WallTime since;
    };

    std::map<ClientId, Client> clients_; ///< the connected ones
    std::optional<Hold> hold_;
    std::optional<HoldEnd> lastEnd_;
};

} // namespace velmo
