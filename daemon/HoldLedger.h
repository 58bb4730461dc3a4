#pragma once

#include "core/power/HoldReport.h"
#include "core/support/Time.h"
#include "daemon/ClientConnection.h"

#include <map>
#include <optional>

namespace velmo {

/// Remembers whose hold it is and how holds ended, for whoever asks the daemon about it. The guard
/// writes into it as things happen, and no rule of the guard looks into it.
class HoldLedger {
public:
    /// A client has come. What it is called may be absent.
    void connected(ClientId who, std::optional<std::int64_t> processId,
                   std::optional<std::string> program);

    /// It has gone: how its holds ended is of no use to anybody any more.
    void disconnected(ClientId who);

    /// A hold was granted. One that its holder renews goes on.
    void began(ClientId who, WallTime now);

    /// The hold in force, if there is one, has ended.
    void ended(HoldEnding how, WallTime now);

    /// A hold of an earlier run of the daemon has ended.
    void endedEarlier(const HoldEnd& end) { lastEnd_ = end; }

    /// Returns who holds, without what the guard itself knows: floor, age, and who is asking.
    [[nodiscard]] std::optional<HolderReport> holder() const;

    /// Returns how the last hold of that client ended.
    [[nodiscard]] std::optional<HoldEnd> lastEndOf(ClientId who) const;

    /// Returns how the last hold of anybody ended.
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

    std::map<ClientId, Client> clients_; ///< those that are connected
    std::optional<Hold> hold_;
    std::optional<HoldEnd> lastEnd_;
};

} // namespace velmo
