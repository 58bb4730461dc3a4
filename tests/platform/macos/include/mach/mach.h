#pragma once

/// The Mac's ports, which other systems lack.
using mach_port_t = unsigned int;
using kern_return_t = int;
