#include "daemon/HoldLedger.h"

#include <utility>

namespace velmo {

void HoldLedger::connected(ClientId who, std::optional<std::int64_t> processId,
                           std::optional<std::string> program) {
    clients_[who] = {.processId = processId, .program = std::move(program), .lastEnd = {}};
}

void HoldLedger::disconnected(ClientId who) {
    clients_.erase(who);
}

void HoldLedger::began(ClientId who, WallTime now) {
    if (!hold_)
        hold_ = {.who = who, .since = now};
}

void HoldLedger::ended(HoldEnding how, WallTime now) {
    if (!hold_)
        return;
    lastEnd_ = {.how = std::string(rawText(how)), .at = now.sinceEpoch};
    // A call that was still under way may have taken the hold for a client that had gone.
    if (const auto client = clients_.find(hold_->who); client != clients_.end())
        client->second.lastEnd = lastEnd_;
    hold_.reset();
}

std::optional<HolderReport> HoldLedger::holder() const {
    if (!hold_)
        return std::nullopt;
    HolderReport report{.processId = {}, .program = {}, .since = hold_->since.sinceEpoch};
    if (const auto client = clients_.find(hold_->who); client != clients_.end()) {
        report.processId = client->second.processId;
        report.program = client->second.program;
    }
    return report;
}

std::optional<HoldEnd> HoldLedger::lastEndOf(ClientId who) const {
    const auto client = clients_.find(who);
    return client == clients_.end() ? std::nullopt : client->second.lastEnd;
}

} // namespace velmo
