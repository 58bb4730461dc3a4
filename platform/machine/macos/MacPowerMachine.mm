#include "platform/machine/macos/MacPowerMachine.h"

#include "platform/machine/macos/PowerRootDomain.h"
#include "platform/machine/macos/PowerSources.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Clocks.h"

#import <Foundation/Foundation.h>

#include <chrono>
#include <thread>

namespace velmo {

std::optional<std::string> MacPowerMachine::runPmset(PmsetArguments arguments) {
    return outputOf(pmsetPath, arguments);
}

std::optional<bool> MacPowerMachine::sleepDisabledProperty() {
    return sleepDisabledInRootDomain();
}

std::optional<PowerSourceSnapshot> MacPowerMachine::powerSources() {
    return readPowerSources();
}

ThermalState MacPowerMachine::thermalState() {
    @autoreleasepool {
        return static_cast<ThermalState>(NSProcessInfo.processInfo.thermalState);
    }
}

std::optional<LidState> MacPowerMachine::lid() {
    return lidInRootDomain();
}

bool MacPowerMachine::requestSleep() {
    return requestSystemSleep();
}

WallTime MacPowerMachine::wallTime() {
    return Clocks::wallTime();
}

SteadyTime MacPowerMachine::steadyTime() {
    return Clocks::steadyTime();
}

void MacPowerMachine::pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

} // namespace velmo
