#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>

namespace velmo {

/// Reports what attempts to raise a window achieved (`WindowRaise::perform`).
struct FocusOutcome {
    bool raised = false;
    std::optional<bool> minimized; ///< whether it was minimized before; absent if that is not known
    std::int64_t attempts = 0;

    static constexpr auto fields = std::tuple{field("raised", &FocusOutcome::raised),
                                              field("minimized", &FocusOutcome::minimized),
                                              field("attempts", &FocusOutcome::attempts)};
    bool operator==(const FocusOutcome&) const = default;
};

} // namespace velmo
