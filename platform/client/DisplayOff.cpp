#include "platform/client/DisplayOff.h"

#include "platform/posix/ChildProcess.h"

#include <array>
#include <string_view>
#include <thread>

namespace velmo {

void turnDisplayOffBy(const std::string& pmset) {
    std::thread([pmset] {
        const std::array<std::string_view, 1> arguments{"displaysleepnow"};
        outputOf(pmset, arguments); // a display that stays lit is all that can come of it
    }).detach();
}

} // namespace velmo
