#include "foundation/geometry/ParticleSystem_v2.h"

#include "tests/support/counted_memory.h"

#include <gtest/gtest.h>

#include <cstddef>

// The memory of a system.

namespace vellum {
namespace {

class ParticleSystem_v2_memory_test : public testing::TestWithParam<unsigned int> {};

TEST_P(ParticleSystem_v2_memory_test, positionAndVelocityTakeNoMoreThan29BytesForEachParticle) {
    std::size_t const before = counted_memory::held();
    ParticleSystem_v2 system;
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addParticles(GetParam());
    EXPECT_LE(counted_memory::held() - before, std::size_t{29} * GetParam());
    EXPECT_GE(counted_memory::held() - before, std::size_t{28} * GetParam()) << "the count of bytes is wrong";
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
    std::size_t const before = counted_memory::held();
    system.compact();
    EXPECT_EQ(counted_memory::held(), before);
}

}  // namespace
}  // namespace vellum
