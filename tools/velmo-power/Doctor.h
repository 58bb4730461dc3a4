#pragma once

#include "core/power/HoldReport.h"
#include "platform/client/Installation.h"

#include "machine/PowerMachine.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// `velmo-power doctor`: what must be true for a hold to work, in order.
namespace velmo {

struct Finding {
    enum class Kind {
        good,
        bad,     ///< a hold can't work, or sleep may stay disabled
        unknown, ///< it can't be seen from here
    };

    Kind kind = Kind::good;
    std::string fact; ///< a clause without a full stop
    std::string cure; ///< what to do about it; empty if nothing
};

/// Returns every finding, good ones too. `daemonAnswer` is the report of the daemon, or why there
/// is none.
std::vector<Finding> diagnose(const Installation& installation, PowerMachine& machine,
                              const std::optional<HoldReport>& report,
                              std::string_view whyNoReport);

/// One line a finding, its cure below it, and the end of the log.
std::string findingsText(const std::vector<Finding>& findings, const Installation& installation);

} // namespace velmo
