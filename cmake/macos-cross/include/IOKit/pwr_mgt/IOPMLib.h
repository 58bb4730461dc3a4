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

#ifdef __cplusplus
}
#endif
