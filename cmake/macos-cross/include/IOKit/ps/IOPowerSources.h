#pragma once

/// The part of IOKit's power sources that the project calls, for the cross build alone. Written
/// from the public documentation.

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// ps/IOPowerSources.h, macOS 10.2; the providing source's type 10.7
CFTypeRef IOPSCopyPowerSourcesInfo(void);
CFStringRef IOPSGetProvidingPowerSourceType(CFTypeRef snapshot);
CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef snapshot);
CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef snapshot, CFTypeRef source);

#ifdef __cplusplus
}
#endif
