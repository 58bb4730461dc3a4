#include "platform/machine/macos/PowerRootDomain.h"

#include "platform/macos/CoreFoundation.h"

#include <IOKit/IOKitLib.h>
#include <IOKit/pwr_mgt/IOPMLib.h>

namespace velmo {

namespace {

std::optional<bool> booleanInRootDomain(CFStringRef name) {
    // The look-up releases the matching dictionary, whatever it finds.
    const io_service_t service =
        IOServiceGetMatchingService(kIOMainPortDefault, IOServiceMatching("IOPMrootDomain"));
    if (service == 0)
        return std::nullopt;
    const Owned<CFTypeRef> property(
        IORegistryEntryCreateCFProperty(service, name, kCFAllocatorDefault, IOOptionBits{}));
    IOObjectRelease(service);
    return booleanIn(property.get());
}

} // namespace

std::optional<bool> sleepDisabledInRootDomain() {
    return booleanInRootDomain(CFSTR("SleepDisabled"));
}

std::optional<LidState> lidInRootDomain() {
    const auto isShut = booleanInRootDomain(CFSTR("AppleClamshellState"));
    const auto causesSleep = booleanInRootDomain(CFSTR("AppleClamshellCausesSleep"));
    if (!isShut || !causesSleep)
        return std::nullopt;
    return LidState{.isShut = *isShut, .causesSleep = *causesSleep};
}

bool requestSystemSleep() {
    const io_connect_t connection = IOPMFindPowerManagement(kIOMainPortDefault);
    if (connection == 0)
        return false;
    const bool taken = IOPMSleepSystem(connection) == kIOReturnSuccess;
    IOServiceClose(connection);
    return taken;
}

} // namespace velmo
