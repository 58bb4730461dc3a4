#include "platform/client/DisplayOff.h"

#include "platform/posix/ChildProcess.h"

#include <thread>

namespace velmo {

void turnDisplayOffBy(const std::string& pmset) {
    std::thread([pmset] {
        outputOf(pmset, {"displaysleepnow"}); // a display that stays lit is all that can come of it
    }).detach();
}

} // namespace velmo
