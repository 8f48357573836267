#pragma once

/// \file
/// Stand-in for the system header of that name: what the reading of accelerator statistics uses of it. The
/// test that includes it defines the functions.

#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach.h>

using io_object_t = mach_port_t;
using io_iterator_t = io_object_t;
using io_registry_entry_t = io_object_t;
using IOOptionBits = unsigned int;

extern "C" {
kern_return_t IOMasterPort(mach_port_t bootstrapPort, mach_port_t* masterPort);
CFMutableDictionaryRef IOServiceMatching(char const* name);
kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t* existing);
io_object_t IOIteratorNext(io_iterator_t iterator);
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry, CFMutableDictionaryRef* properties,
                                                CFAllocatorRef allocator, IOOptionBits options);
kern_return_t IOObjectRelease(io_object_t object);
}
