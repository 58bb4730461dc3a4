#pragma once

#include "core/power/HoldReport.h"
#include "machine/PowerMachine.h"
#include "platform/client/Installation.h"

#include <optional>
#include <string>
#include <string_view>
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

/// Returns every finding, good ones too. Without a `report` of the daemon, `whyNoReport` says why
/// it is missing.
std::vector<Finding> diagnose(const Installation& installation, PowerMachine& machine,
                              const std::optional<HoldReport>& report,
                              std::string_view whyNoReport);

/// Returns a line for every finding with its cure below, then the end of the log.
std::string findingsText(const std::vector<Finding>& findings, const Installation& installation);

} // namespace velmo
