#include "internal/accelerator_memory.h"

#include <cstdint>

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <mach/mach.h>

namespace vellum {

namespace {

constexpr std::int64_t BYTES_PER_KILOBYTE = 1024;

/// Reads one accelerator's statistics. A properties dictionary without "PerformanceStatistics" is not
/// guarded against: accelerators always publish it.
void readService(io_object_t const& service, int& kilobytes) {
    CFMutableDictionaryRef properties = nullptr;
    if (IORegistryEntryCreateCFProperties(service, &properties, kCFAllocatorDefault, 0) != KERN_SUCCESS) {
        return;
    }
    auto const statistics =
        static_cast<CFDictionaryRef>(CFDictionaryGetValue(properties, CFSTR("PerformanceStatistics")));
    auto const freeBytes = static_cast<CFNumberRef>(CFDictionaryGetValue(statistics, CFSTR("vramFreeBytes")));
    if (freeBytes != nullptr) {
        std::int64_t bytes = 0;
        CFNumberGetValue(freeBytes, kCFNumberSInt64Type, &bytes);
        kilobytes = static_cast<int>(bytes / BYTES_PER_KILOBYTE);
    }
    CFRelease(properties);
}

}  // namespace

void readAcceleratorFreeMemory(int& kilobytes) {
    mach_port_t port = 0;
    if (IOMasterPort(bootstrap_port, &port) != KERN_SUCCESS) {
        return;
    }
    io_iterator_t iterator = 0;
    if (IOServiceGetMatchingServices(port, IOServiceMatching("IOAccelerator"), &iterator) != KERN_SUCCESS) {
        return;
    }
    while (io_object_t const service = IOIteratorNext(iterator)) {
        readService(service, kilobytes);
        IOObjectRelease(service);
    }
    IOObjectRelease(iterator);
}

}  // namespace vellum
