#include "foundation/geometry/ParticleSystem_v2.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include <malloc.h>

// What a system takes of memory. This file replaces the global operators of the test program by ones that count
// the bytes that malloc really sets aside.

namespace {

std::atomic<std::size_t> allocated{0};  // bytes

// Not inlined: the compiler would take the mixing of operators and C functions, which is meant, for a mistake.
[[gnu::noinline]] void* allocate(std::size_t const size) {
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    allocated += malloc_usable_size(memory);
    return memory;
}

[[gnu::noinline]] void release(void* const memory) noexcept {
    allocated -= memory != nullptr ? malloc_usable_size(memory) : 0;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

namespace vellum {
namespace {

class ParticleSystem_v2_memory_test : public testing::TestWithParam<unsigned int> {};

TEST_P(ParticleSystem_v2_memory_test, positionAndVelocityTakeNoMoreThan29BytesForEachParticle) {
    std::size_t const before = allocated;
    ParticleSystem_v2 system;
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addParticles(GetParam());
    EXPECT_LE(allocated - before, std::size_t{29} * GetParam());
    EXPECT_GE(allocated - before, std::size_t{28} * GetParam()) << "the count of bytes is wrong";
}

INSTANTIATE_TEST_SUITE_P(Counts, ParticleSystem_v2_memory_test,
                         testing::Values(1000000U, 1000001U, 1048577U));

TEST(ParticleSystem_v2_compaction_memory_test, compactingTakesNothingForGood) {
    ParticleSystem_v2 system;
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addParticles(100000);
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        chunk->release(17);
    }
    std::size_t const before = allocated;
    system.compact();
    EXPECT_EQ(allocated, before);
}

}  // namespace
}  // namespace vellum
