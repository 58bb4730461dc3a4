#pragma once

/// The part of IOKit that the project calls, for the cross build alone. Written from the public
/// documentation; each group names the framework's own header and the macOS version that brought
/// it.

#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach.h>

#ifdef __cplusplus
extern "C" {
#endif

// IOTypes.h, macOS 10.0
typedef mach_port_t io_object_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef io_object_t io_connect_t;
typedef uint32_t IOOptionBits;

// IOReturn.h, macOS 10.0
typedef kern_return_t IOReturn;
#define kIOReturnSuccess 0

// IOKitLib.h, macOS 10.0; the port's name 12.0
extern const mach_port_t kIOMainPortDefault;
CFMutableDictionaryRef IOServiceMatching(const char* name);
io_service_t IOServiceGetMatchingService(mach_port_t mainPort, CFDictionaryRef matching);
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef allocator, IOOptionBits options);
kern_return_t IOObjectRelease(io_object_t object);
kern_return_t IOServiceClose(io_connect_t connection);

#ifdef __cplusplus
}
#endif
