#include "toolkit/particle_arrays.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace vellum::toolkit {
namespace {

std::vector<Vector3<float>> line(unsigned int count, float from = 0) {
    std::vector<Vector3<float>> points;
    for (unsigned int i = 0; i < count; ++i) {
        points.push_back({from + static_cast<float>(i), 0, 0});
    }
    return points;
}

/// The x of a vector channel, or the values of a scalar one, in order.
std::vector<float> valuesOf(ParticleSystem_v2& system, unsigned int channel) {
    std::vector<float> values;
    bool const isVector = system.findChannel(channel)->type == ParticleChannel_v2::VECTOR;
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        for (unsigned int i = 0; i < chunk->count(); ++i) {
            ParticleChannelChunkData_v2& data = *chunk->channelData(channel);
            values.push_back(isVector ? data.asVectors()[i].x : data.asFloats()[i]);
        }
    }
    return values;
}

std::vector<float> numbers(unsigned int count, float from = 0) {
    std::vector<float> values;
    for (unsigned int i = 0; i < count; ++i) {
        values.push_back(from + static_cast<float>(i));
    }
    return values;
}

constexpr unsigned int SEVERAL_CHUNKS = 2 * ParticleSystemChunk_v2::CAPACITY + 100;

TEST(particle_arrays, emptySystemGetsAsManyParticlesAsPositions) {
    ParticleSystem_v2 system;
    EXPECT_TRUE(setPositions(system, line(SEVERAL_CHUNKS)));
    EXPECT_EQ(system.size(), SEVERAL_CHUNKS);
    EXPECT_EQ(system.channelId("position"), 0U);
    EXPECT_EQ(valuesOf(system, 0), numbers(SEVERAL_CHUNKS));
}

TEST(particle_arrays, systemGrowsAndShrinksWithThePositions) {
    ParticleSystem_v2 system;
    for (unsigned int const count : {10U, SEVERAL_CHUNKS, 20000U, 3U, 0U, 40000U}) {
        EXPECT_TRUE(setPositions(system, line(count, 7)));
        EXPECT_EQ(system.size(), count);
        EXPECT_EQ(valuesOf(system, 0), numbers(count, 7)) << count;
    }
}

TEST(particle_arrays, particlesThatStayKeepTheirOtherValues) {
    ParticleSystem_v2 system;
    setPositions(system, line(5));
    setChannel(system, "energy", numbers(5, 50));
    setPositions(system, line(3));
    EXPECT_EQ(valuesOf(system, 1), numbers(3, 50));
    setPositions(system, line(4));
    EXPECT_THAT(valuesOf(system, 1), testing::ElementsAre(50, 51, 52, 0));
}

TEST(particle_arrays, channelsOfBothTypesAreAddedAndReplaced) {
    ParticleSystem_v2 system;
    setPositions(system, line(SEVERAL_CHUNKS));
    EXPECT_TRUE(setChannel(system, "velocity", line(SEVERAL_CHUNKS, 3)));
    EXPECT_TRUE(setChannel(system, "energy", numbers(SEVERAL_CHUNKS, 5)));
    EXPECT_TRUE(setChannel(system, "energy", numbers(SEVERAL_CHUNKS, 6)));
    EXPECT_EQ(system.channelCount(), 3U);
    EXPECT_EQ(valuesOf(system, system.channelId("velocity")), numbers(SEVERAL_CHUNKS, 3));
    EXPECT_EQ(valuesOf(system, system.channelId("energy")), numbers(SEVERAL_CHUNKS, 6));
}

TEST(particle_arrays, releasedParticlesAreClosedUpFirst) {
    ParticleSystem_v2 system;
    setPositions(system, line(6));
    system.firstChunk()->release(1);
    system.firstChunk()->release(4);
    EXPECT_TRUE(setChannel(system, "energy", numbers(4)));
    EXPECT_EQ(valuesOf(system, 1), numbers(4));
}

TEST(particle_arrays, whatDoesNotFitChangesNothing) {
    ParticleSystem_v2 system;
    setPositions(system, line(4));
    setChannel(system, "energy", numbers(4));
    EXPECT_FALSE(setChannel(system, "energy", numbers(3))) << "another number";
    EXPECT_FALSE(setChannel(system, "energy", line(4))) << "another type";
    EXPECT_FALSE(setChannel(system, "", numbers(4)));
    EXPECT_FALSE(setChannel(system, nullptr, numbers(4)));
    EXPECT_EQ(valuesOf(system, 1), numbers(4));
    EXPECT_EQ(system.channelCount(), 2U);

    ParticleSystem_v2 other;
    other.addChannel("velocity", ParticleChannel_v2::VECTOR);
    EXPECT_FALSE(setPositions(other, line(4))) << "the first channel is another one";
    ParticleSystem_v2 scalar;
    scalar.addChannel("position", ParticleChannel_v2::SCALAR);
    EXPECT_FALSE(setPositions(scalar, line(4))) << "positions of another type";
    EXPECT_EQ(scalar.size(), 0U);
}

}  // namespace
}  // namespace vellum::toolkit
