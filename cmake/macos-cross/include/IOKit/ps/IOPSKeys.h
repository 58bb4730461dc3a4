#pragma once

/// The keys of a power source's description that the project reads, for the cross build alone.
/// Written from the public documentation.

// ps/IOPSKeys.h, macOS 10.2
#define kIOPSTypeKey "Type"
#define kIOPSCurrentCapacityKey "Current Capacity"
#define kIOPSMaxCapacityKey "Max Capacity"
