#include "phone/AttemptLimit.h"

#include <algorithm>

namespace velmo {

bool AttemptLimit::take(SteadyTime now) {
    left_ = std::min(burst, left_ + (now - last_) / pause);
    last_ = now;
    if (left_ < 1)
        return false;
    --left_;
    return true;
}

} // namespace velmo
