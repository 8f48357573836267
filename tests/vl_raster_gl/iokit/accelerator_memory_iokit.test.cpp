#include "internal/accelerator_memory.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <mach/mach.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

// The reading of accelerator statistics, compiled against stand-ins of the few system functions that it
// calls. They play a registry of accelerators and note every call.

struct StandInString {
    std::string text;
};
struct StandInNumber {
    std::int64_t value;
};
struct StandInAllocator {};
struct StandInDictionary {
    std::string name;                          // for the notes
    StandInDictionary const* statistics;       // under "PerformanceStatistics"
    std::optional<StandInNumber> freeBytes{};  // under "vramFreeBytes"
};

namespace {

constexpr mach_port_t BOOTSTRAP_PORT = 11;
constexpr mach_port_t MASTER_PORT = 22;
constexpr io_iterator_t ITERATOR = 33;
constexpr io_object_t FIRST_SERVICE = 100;  // the others follow
constexpr kern_return_t FAILURE = 5;

/// An accelerator as the registry has it.
struct Accelerator {
    bool hasProperties = true;
    bool hasStatistics = true;
    std::optional<std::int64_t> freeBytes{};

    StandInDictionary statistics{};
    StandInDictionary properties{};
};

struct Registry {
    bool hasMasterPort = true;
    bool hasServices = true;
    std::vector<Accelerator> accelerators;

    std::size_t next = 0;
    std::vector<std::string> calls;
};

Registry registry;
StandInAllocator const defaultAllocator{};

/// As the registry names the objects that go in and out of the calls.
std::string service(io_object_t const& object) {
    if (object == ITERATOR) {
        return "iterator";
    }
    if (object >= FIRST_SERVICE && object < FIRST_SERVICE + registry.accelerators.size()) {
        return "service " + std::to_string(object - FIRST_SERVICE);
    }
    return "unknown object " + std::to_string(object);
}

void note(std::string const& call) {
    registry.calls.push_back(call);
}

}  // namespace

mach_port_t bootstrap_port = BOOTSTRAP_PORT;
CFAllocatorRef const kCFAllocatorDefault = &defaultAllocator;

extern "C" {

kern_return_t IOMasterPort(mach_port_t bootstrapPort, mach_port_t* masterPort) {
    note("IOMasterPort(" + std::string(bootstrapPort == BOOTSTRAP_PORT ? "bootstrap" : "another port") + ")");
    if (!registry.hasMasterPort) {
        return FAILURE;
    }
    *masterPort = MASTER_PORT;
    return KERN_SUCCESS;
}

CFMutableDictionaryRef IOServiceMatching(char const* name) {
    static StandInDictionary matching;
    note("IOServiceMatching(" + std::string(name) + ")");
    matching = {name, nullptr};
    return &matching;
}

kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
    note("IOServiceGetMatchingServices(" +
         std::string(masterPort == MASTER_PORT ? "master" : "another port") + ", " + matching->name + ")");
    if (!registry.hasServices) {
        return FAILURE;
    }
    *existing = ITERATOR;
    return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
    note("IOIteratorNext(" + service(iterator) + ")");
    if (registry.next == registry.accelerators.size()) {
        return 0;
    }
    return FIRST_SERVICE + static_cast<io_object_t>(registry.next++);
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry, CFMutableDictionaryRef* properties,
                                                CFAllocatorRef allocator, IOOptionBits options) {
    note("IORegistryEntryCreateCFProperties(" + service(entry) + ")");
    EXPECT_EQ(allocator, kCFAllocatorDefault);
    EXPECT_EQ(options, 0U);
    Accelerator& accelerator = registry.accelerators.at(entry - FIRST_SERVICE);
    if (!accelerator.hasProperties) {
        return FAILURE;
    }
    std::string const number = std::to_string(entry - FIRST_SERVICE);
    accelerator.statistics = {"statistics " + number, nullptr};
    if (accelerator.freeBytes) {
        accelerator.statistics.freeBytes = StandInNumber{*accelerator.freeBytes};
    }
    accelerator.properties = {"properties " + number,
                              accelerator.hasStatistics ? &accelerator.statistics : nullptr};
    *properties = &accelerator.properties;
    return KERN_SUCCESS;
}

kern_return_t IOObjectRelease(io_object_t object) {
    note("IOObjectRelease(" + service(object) + ")");
    return KERN_SUCCESS;
}

CFStringRef standInConstantString(char const* text) {
    static StandInString const statistics{"PerformanceStatistics"};
    static StandInString const freeBytes{"vramFreeBytes"};
    static StandInString other;
    if (statistics.text == text) {
        return &statistics;
    }
    if (freeBytes.text == text) {
        return &freeBytes;
    }
    other.text = text;
    return &other;
}

void const* CFDictionaryGetValue(CFDictionaryRef dictionary, void const* key) {
    std::string const& name = static_cast<CFStringRef>(key)->text;
    note("CFDictionaryGetValue(" + (dictionary != nullptr ? dictionary->name : "null") + ", " + name + ")");
    if (dictionary == nullptr) {
        return nullptr;
    }
    if (name == "PerformanceStatistics") {
        return dictionary->statistics;
    }
    if (name == "vramFreeBytes" && dictionary->freeBytes) {
        return &*dictionary->freeBytes;
    }
    return nullptr;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    note("CFNumberGetValue");
    EXPECT_EQ(type, kCFNumberSInt64Type);
    *static_cast<std::int64_t*>(value) = number->value;
    return 1;
}

void CFRelease(CFTypeRef object) {
    note("CFRelease(" + static_cast<StandInDictionary const*>(object)->name + ")");
}

}  // extern "C"

namespace vellum {
namespace {

using Calls = std::vector<std::string>;

constexpr int FROM_EXTENSION = 4711;  // the former answer of the extension
constexpr std::int64_t MEGABYTE = std::int64_t{1024} * 1024;

Accelerator withFreeBytes(std::int64_t const& bytes) {
    Accelerator accelerator;
    accelerator.freeBytes = bytes;
    return accelerator;
}

Accelerator withoutProperties() {
    Accelerator accelerator = withFreeBytes(MEGABYTE);
    accelerator.hasProperties = false;
    return accelerator;
}

class AcceleratorMemory_test : public testing::Test {
protected:
    AcceleratorMemory_test() { registry = {}; }

    /// The kilobytes after a reading on these accelerators.
    static int read(std::vector<Accelerator> const& accelerators) {
        registry.accelerators = accelerators;
        int kilobytes = FROM_EXTENSION;
        readAcceleratorFreeMemory(kilobytes);
        return kilobytes;
    }
};

TEST_F(AcceleratorMemory_test, everythingIsAskedInOrderAndReleased) {
    EXPECT_EQ(read({withFreeBytes(3 * MEGABYTE)}), 3 * 1024);
    EXPECT_EQ(registry.calls,
              (Calls{"IOMasterPort(bootstrap)", "IOServiceMatching(IOAccelerator)",
                     "IOServiceGetMatchingServices(master, IOAccelerator)", "IOIteratorNext(iterator)",
                     "IORegistryEntryCreateCFProperties(service 0)",
                     "CFDictionaryGetValue(properties 0, PerformanceStatistics)",
                     "CFDictionaryGetValue(statistics 0, vramFreeBytes)", "CFNumberGetValue",
                     "CFRelease(properties 0)", "IOObjectRelease(service 0)", "IOIteratorNext(iterator)",
                     "IOObjectRelease(iterator)"}));
}

TEST_F(AcceleratorMemory_test, lastAcceleratorCounts) {
    EXPECT_EQ(read({withFreeBytes(3 * MEGABYTE), withFreeBytes(8 * MEGABYTE), withFreeBytes(5 * MEGABYTE)}),
              5 * 1024);
}

TEST_F(AcceleratorMemory_test, acceleratorWithoutAnswerLeavesOneBefore) {
    EXPECT_EQ(read({withFreeBytes(3 * MEGABYTE), withoutProperties(), Accelerator{}}), 3 * 1024);
}

TEST_F(AcceleratorMemory_test, bytesBecomeKilobytesTowardZero) {
    struct Row {
        std::int64_t bytes;
        int kilobytes;
    };
    for (Row const& row : {Row{0, 0}, Row{1023, 0}, Row{1024, 1}, Row{2047, 1}, Row{-1, 0}, Row{-1023, 0},
                           Row{-1024, -1}, Row{-1536, -1}, Row{5000000000, 4882812},
                           Row{std::int64_t{std::numeric_limits<int>::max()} * 1024 + 1023,
                               std::numeric_limits<int>::max()}}) {
        registry = {};
        EXPECT_EQ(read({withFreeBytes(row.bytes)}), row.kilobytes) << row.bytes << " bytes";
    }
}

TEST_F(AcceleratorMemory_test, withoutMasterPortNothingElseIsAsked) {
    registry.hasMasterPort = false;
    EXPECT_EQ(read({withFreeBytes(MEGABYTE)}), FROM_EXTENSION);
    EXPECT_EQ(registry.calls, Calls{"IOMasterPort(bootstrap)"});
}

TEST_F(AcceleratorMemory_test, withoutServicesThereIsNothingToRelease) {
    registry.hasServices = false;
    EXPECT_EQ(read({withFreeBytes(MEGABYTE)}), FROM_EXTENSION);
    EXPECT_EQ(registry.calls, (Calls{"IOMasterPort(bootstrap)", "IOServiceMatching(IOAccelerator)",
                                     "IOServiceGetMatchingServices(master, IOAccelerator)"}));
}

TEST_F(AcceleratorMemory_test, withoutAcceleratorsIteratorIsReleased) {
    EXPECT_EQ(read({}), FROM_EXTENSION);
    EXPECT_EQ(registry.calls, (Calls{"IOMasterPort(bootstrap)", "IOServiceMatching(IOAccelerator)",
                                     "IOServiceGetMatchingServices(master, IOAccelerator)",
                                     "IOIteratorNext(iterator)", "IOObjectRelease(iterator)"}));
}

TEST_F(AcceleratorMemory_test, serviceWithoutPropertiesIsReleasedAndPassedOver) {
    EXPECT_EQ(read({withoutProperties(), withFreeBytes(2 * MEGABYTE)}), 2 * 1024);
    EXPECT_EQ(registry.calls,
              (Calls{"IOMasterPort(bootstrap)", "IOServiceMatching(IOAccelerator)",
                     "IOServiceGetMatchingServices(master, IOAccelerator)", "IOIteratorNext(iterator)",
                     "IORegistryEntryCreateCFProperties(service 0)", "IOObjectRelease(service 0)",
                     "IOIteratorNext(iterator)", "IORegistryEntryCreateCFProperties(service 1)",
                     "CFDictionaryGetValue(properties 1, PerformanceStatistics)",
                     "CFDictionaryGetValue(statistics 1, vramFreeBytes)", "CFNumberGetValue",
                     "CFRelease(properties 1)", "IOObjectRelease(service 1)", "IOIteratorNext(iterator)",
                     "IOObjectRelease(iterator)"}));
}

TEST_F(AcceleratorMemory_test, statisticsWithoutNumberKeepValue) {
    EXPECT_EQ(read({Accelerator{}}), FROM_EXTENSION);
    EXPECT_EQ(registry.calls,
              (Calls{"IOMasterPort(bootstrap)", "IOServiceMatching(IOAccelerator)",
                     "IOServiceGetMatchingServices(master, IOAccelerator)", "IOIteratorNext(iterator)",
                     "IORegistryEntryCreateCFProperties(service 0)",
                     "CFDictionaryGetValue(properties 0, PerformanceStatistics)",
                     "CFDictionaryGetValue(statistics 0, vramFreeBytes)", "CFRelease(properties 0)",
                     "IOObjectRelease(service 0)", "IOIteratorNext(iterator)", "IOObjectRelease(iterator)"}));
}

TEST_F(AcceleratorMemory_test, missingStatisticsAreRead) {
    Accelerator accelerator;
    accelerator.hasStatistics = false;
    EXPECT_EQ(read({accelerator}), FROM_EXTENSION);
    ASSERT_EQ(registry.calls.size(), 11U);
    EXPECT_EQ(registry.calls[6], "CFDictionaryGetValue(null, vramFreeBytes)");
    EXPECT_EQ(registry.calls[7], "CFRelease(properties 0)");
}

}  // namespace
}  // namespace vellum
