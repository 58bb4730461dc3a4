#pragma once

#include "core/power/HoldReport.h"
#include "machine/PowerMachine.h"
#include "platform/client/Installation.h"
#include "tools/velmo-power/Conversation.h"

#include <string>
#include <vector>

/// `velmo-power doctor`: checks, in order, what must be true for a hold to work.
namespace velmo {

struct Finding {
    enum class Kind {
        good,
        bad,     ///< a hold can't work, or sleep may stay disabled
        unknown, ///< can't be seen from here
    };

    Kind kind = Kind::good;
    std::string fact; ///< a clause without a full stop
    std::string cure; ///< what to do about it; empty if nothing
};

/// Returns every finding, good ones too. `report` is the daemon's answer. The cures are those of
/// the Mac that was examined: a simulated Mac has others than a real one.
std::vector<Finding> diagnose(const Installation& installation, PowerMachine& machine,
                              const Conversation::Answer<HoldReport>& report);

/// Returns a line that says that the Mac is simulated, if it is, then a line for every finding with
/// its cure below, then the end of the log.
std::string findingsText(const std::vector<Finding>& findings, const Installation& installation);

} // namespace velmo
