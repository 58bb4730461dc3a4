#pragma once

#include "core/power/HoldReport.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace velmo {

/// What the power daemon offers to one connected client. The daemon's session implements it, and so
/// does the client's side of every transport; over XPC the calls are the selectors
/// "holdWithBatteryFloor:reply:", "heartbeatWithReply:", "releaseWithReply:" and
/// "reportWithReply:".
///
/// The callee answers each call exactly once, from a thread of its choosing; over a transport a
/// lost connection loses the answers to its calls. Replies own what they capture and may outlive
/// the caller.
class VelmoPowerProtocol {
public:
    using HoldReply = std::function<void(bool ok, std::string_view reason)>;
    using Reply = std::function<void(bool ok)>;
    using ReportReply = std::function<void(const std::optional<HoldReport>& report)>;

    virtual ~VelmoPowerProtocol() = default;

    /// Keeps the Mac awake until released. `batteryFloor` is the percentage below which a hold on
    /// battery power ends, clamped to 10...95. The reason is "" when ok, else the text of a
    /// `HoldRefusal`; a newer daemon may have others.
    virtual void hold(std::int64_t batteryFloor, HoldReply reply) = 0;

    /// Keeps the client's hold, for `PowerGuardPolicy::heartbeatTimeout` from now. Answers false if
    /// this client does not hold.
    virtual void heartbeat(Reply reply) = 0;

    /// Ends the hold in force, which may be another client's. Answers false if sleep could not be
    /// enabled again yet.
    virtual void release(Reply reply) = 0;

    /// Tells about the holds. The report is absent if the daemon or the connection is going away,
    /// and over a transport if the daemon's answer can't be decoded.
    virtual void report(ReportReply reply) = 0;
};

} // namespace velmo
