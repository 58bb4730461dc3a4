#include "platform/machine/macos/MacPowerMachine.h"

#include "platform/machine/macos/PowerRootDomain.h"
#include "platform/machine/macos/PowerSources.h"
#include "platform/posix/ChildProcess.h"

#import <Foundation/Foundation.h>

#include <chrono>

namespace velmo {

std::optional<std::string> MacPowerMachine::runPmset(PmsetArguments arguments) {
    return outputOf("/usr/bin/pmset", {arguments.begin(), arguments.size()});
}

std::optional<bool> MacPowerMachine::sleepDisabledProperty() {
    return sleepDisabledInRootDomain();
}

std::optional<PowerSourceSnapshot> MacPowerMachine::powerSources() {
    return readPowerSources();
}

int MacPowerMachine::thermalRaw() {
    return static_cast<int>(NSProcessInfo.processInfo.thermalState);
}

double MacPowerMachine::now() {
    const std::chrono::duration<double> since = std::chrono::system_clock::now().time_since_epoch();
    return since.count();
}

} // namespace velmo
