#pragma once

#include "client/HoldKeeper.h"
#include "core/power/BatteryFloor.h"
#include "core/power/HoldReport.h"

#include <functional>
#include <optional>

namespace velmo {

/// The power of this computer, and the hold of the bridge. The functions call back on the bridge's
/// thread, never before they return and never once the object is gone.
class PhonePower {
public:
    struct Reading {
        std::optional<int> battery; ///< percent; absent without one
        std::optional<bool> mains;
        std::optional<HoldReport> report; ///< absent if no power daemon answers
    };

    virtual ~PhonePower() = default;

    /// Reads the computer, and asks the power daemon.
    virtual void read(std::function<void(const Reading& reading)> done) = 0;

    /// Keeps the computer awake until `release`. `changed` is called at every change.
    virtual void keep(BatteryFloor floor,
                      std::function<void(const HoldKeeper::Status& status)> changed) = 0;

    virtual void release() = 0;
};

} // namespace velmo
