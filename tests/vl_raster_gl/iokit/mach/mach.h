#pragma once

/// \file
/// Stand-in for the system header of that name: what the reading of accelerator statistics uses of it.

using kern_return_t = int;
using mach_port_t = unsigned int;

#define KERN_SUCCESS 0

extern mach_port_t bootstrap_port;
