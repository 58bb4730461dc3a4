#pragma once

/// The Mac's ports, which every other system lacks.
using mach_port_t = unsigned int;
using kern_return_t = int;
