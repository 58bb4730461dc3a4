#include "platform/client/DisplayOff.h"

#include "platform/posix/ChildProcess.h"

#include <thread>

namespace velmo {

void turnDisplayOffBy(const std::string& pmset) {
    std::thread([pmset] {
        outputOf(pmset, {"displaysleepnow"}); // a failure only leaves the display lit
    }).detach();
}

} // namespace velmo
