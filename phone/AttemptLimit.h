#pragma once

#include "core/support/Time.h"

namespace velmo {

/// Bounds how often something may be tried: `burst` times at once, and then once in every `pause`.
class AttemptLimit {
public:
    static constexpr double burst = 10;
    static constexpr double pause = 1; ///< seconds

    /// Notes an attempt. Returns false if there have been too many; such an attempt must have no
    /// effect, and counts no further.
    [[nodiscard]] bool take(SteadyTime now);

private:
    double left_ = burst;
    SteadyTime last_{};
};

} // namespace velmo
