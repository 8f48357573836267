#include "tests/support/counted_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include <malloc.h>

// All forms of the operators are replaced: sanitizers check that memory goes back to the family that it came
// from.

namespace {

std::atomic<std::size_t> blocks{0};
std::atomic<std::size_t> largeBlocks{0};
std::atomic<std::size_t> bytes{0};
std::atomic<std::size_t> mostBytes{0};

/// Counts a block, which may be null.
void* counted(void* const memory) noexcept {
    if (memory == nullptr) {
        return nullptr;
    }
    std::size_t const usable = malloc_usable_size(memory);
    ++blocks;
    if (usable >= vellum::counted_memory::LARGE) {
        ++largeBlocks;
    }
    std::size_t const now = bytes += usable;
    std::size_t most = mostBytes;
    while (now > most && !mostBytes.compare_exchange_weak(most, now)) {
    }
    return memory;
}

// Not inlined: the compiler would take the mixing of operators and C functions, which is meant, for a
// mistake.
[[gnu::noinline]] void* allocate(std::size_t const size) noexcept {
    return counted(std::malloc(size != 0 ? size : 1));
}

[[gnu::noinline]] void* allocate(std::size_t const size, std::align_val_t const alignment) noexcept {
    auto const unit = static_cast<std::size_t>(alignment);
    // aligned_alloc asks for whole units.
    std::size_t const units = size / unit + (size % unit != 0 || size == 0 ? 1 : 0);
    return units <= static_cast<std::size_t>(-1) / unit ? counted(std::aligned_alloc(unit, units * unit))
                                                        : nullptr;
}

[[gnu::noinline]] void release(void* const memory) noexcept {
    if (memory != nullptr) {
        bytes -= malloc_usable_size(memory);
        std::free(memory);
    }
}

void* orThrow(void* const memory) {
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return orThrow(allocate(size));
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return orThrow(allocate(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, std::nothrow_t const&) noexcept {
    return allocate(size, alignment);
}
void* operator new[](std::size_t size) {
    return orThrow(allocate(size));
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return orThrow(allocate(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, std::nothrow_t const&) noexcept {
    return allocate(size, alignment);
}

void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t, std::nothrow_t const&) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::nothrow_t const&) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t, std::nothrow_t const&) noexcept {
    release(memory);
}

namespace vellum {

namespace counted_memory {

std::size_t allocations() {
    return blocks;
}

std::size_t largeAllocations() {
    return largeBlocks;
}

std::size_t held() {
    return bytes;
}

std::size_t mostHeld() {
    return mostBytes;
}

std::size_t markHeld() {
    std::size_t const now = bytes;
    mostBytes = now;
    return now;
}

}  // namespace counted_memory

}  // namespace vellum
