#include "platform/machine/macos/PowerSources.h"

#include "platform/macos/CoreFoundation.h"

#include <IOKit/ps/IOPSKeys.h>
#include <IOKit/ps/IOPowerSources.h>

namespace velmo {

namespace {

PowerSource sourceFrom(CFDictionaryRef description) {
    return {.type = textIn(CFDictionaryGetValue(description, CFSTR(kIOPSTypeKey))),
            .currentCapacity =
                integerIn(CFDictionaryGetValue(description, CFSTR(kIOPSCurrentCapacityKey))),
            .maximumCapacity =
                integerIn(CFDictionaryGetValue(description, CFSTR(kIOPSMaxCapacityKey)))};
}

} // namespace

std::optional<PowerSourceSnapshot> readPowerSources() {
    const Owned<CFTypeRef> snapshot(IOPSCopyPowerSourcesInfo());
    if (!snapshot)
        return std::nullopt;
    PowerSourceSnapshot read{
        .providingType = textIn(IOPSGetProvidingPowerSourceType(snapshot.get())), .sources = {}};
    const Owned<CFArrayRef> list(IOPSCopyPowerSourcesList(snapshot.get()));
    const CFIndex count = list ? CFArrayGetCount(list.get()) : 0;
    for (CFIndex index = 0; index < count; ++index) {
        // The description belongs to the snapshot.
        if (const CFDictionaryRef description = IOPSGetPowerSourceDescription(
                snapshot.get(), CFArrayGetValueAtIndex(list.get(), index)))
            read.sources.push_back(sourceFrom(description));
    }
    return read;
}

} // namespace velmo
