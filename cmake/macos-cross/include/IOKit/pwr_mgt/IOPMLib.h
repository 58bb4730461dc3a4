#pragma once

/// The part of IOKit's power management that the project calls, for the cross build alone. Written
/// from the public documentation.

#include <IOKit/IOKitLib.h>

#ifdef __cplusplus
extern "C" {
#endif

// pwr_mgt/IOPMLib.h, macOS 10.0
io_connect_t IOPMFindPowerManagement(mach_port_t mainPort);
IOReturn IOPMSleepSystem(io_connect_t connection);

// pwr_mgt/IOPMLib.h, macOS 10.6; the type of the assertion 10.7
typedef uint32_t IOPMAssertionID;
typedef uint32_t IOPMAssertionLevel;
#define kIOPMNullAssertionID 0
#define kIOPMAssertionLevelOn 255
#define kIOPMAssertionTypePreventUserIdleSystemSleep CFSTR("PreventUserIdleSystemSleep")
IOReturn IOPMAssertionCreateWithName(CFStringRef type, IOPMAssertionLevel level, CFStringRef name,
                                     IOPMAssertionID* assertion);
IOReturn IOPMAssertionRelease(IOPMAssertionID assertion);

#ifdef __cplusplus
}
#endif
