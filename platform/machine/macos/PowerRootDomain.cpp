#include "platform/machine/macos/PowerRootDomain.h"

#include "platform/macos/CoreFoundation.h"

#include <IOKit/IOKitLib.h>

namespace velmo {

std::optional<bool> sleepDisabledInRootDomain() {
    // The look-up releases the matching dictionary, whatever it finds.
    const io_service_t service =
        IOServiceGetMatchingService(kIOMainPortDefault, IOServiceMatching("IOPMrootDomain"));
    if (service == 0)
        return std::nullopt;
    const Owned<CFTypeRef> property(IORegistryEntryCreateCFProperty(
        service, CFSTR("SleepDisabled"), kCFAllocatorDefault, IOOptionBits{}));
    IOObjectRelease(service);
    return booleanIn(property.get());
}

} // namespace velmo
