#include "core/windows/CaptureGate.h"

#include "core/support/PathText.h"

namespace velmo::CaptureGate {

namespace {

constexpr std::string_view lockName = "velmo-window-capture.lock";

} // namespace

std::string lockPath(std::string_view tmp) {
    return PathText::join(tmp, lockName);
}

bool acquire(double wait, double poll, const Clock& now, const Sleep& sleep,
             const TryLock& tryLock) {
    const double deadline = now() + wait;
    while (!tryLock()) {
        // Written so that "not a number" ends the wait.
        if (!(now() < deadline))
            return false;
        sleep(poll);
    }
    return true;
}

} // namespace velmo::CaptureGate
