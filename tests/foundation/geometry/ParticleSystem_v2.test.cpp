#include "foundation/geometry/ParticleSystem_v2.h"

#include "foundation/geometry/ParticleContainerIterator_v2.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"
#include "foundation/raster/Particles_RL_v2.h"
#include "tests/vl_raster_gl/member_slots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

namespace vellum {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int FULL = ParticleSystemChunk_v2::CAPACITY;

/// A system whose particles have their number in every channel.
class ParticleSystem_v2_test : public testing::Test {
protected:
    void fill(unsigned int const& count) {
        position = system.addChannel("position", ParticleChannel_v2::VECTOR);
        density = system.addChannel("density", ParticleChannel_v2::SCALAR);
        system.addParticles(count);
        number(0);
    }

    void number(unsigned int first) {
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
                auto const value = static_cast<float>(first++);
                chunk->channelData(position)->asVectors()[slot] = {value, value, value};
                chunk->channelData(density)->asFloats()[slot] = value;
            }
        }
    }

    /// The numbers of all particles, in the order of iterators. Both channels must agree.
    std::vector<float> numbers() const {
        std::vector<float> result;
        ParticleSystemConstIterator_v2 particle;
        ParticleSystemConstIterator_v2 end;
        end.setEnd(&system);
        for (particle.setBegin(&system); particle != end; ++particle) {
            auto const [channels, index] = *particle;
            float const value = channels[density]->asFloats()[index];
            EXPECT_EQ(channels[position]->asVectors()[index].y, value);
            result.push_back(value);
        }
        return result;
    }

    ParticleSystem_v2 system;
    unsigned int position = 0;
    unsigned int density = 0;
};

// == Channels ==

TEST_F(ParticleSystem_v2_test, channelsAreCountedFromZero) {
    EXPECT_EQ(system.addChannel("position", ParticleChannel_v2::VECTOR), 0U);
    EXPECT_EQ(system.addChannel("velocity", ParticleChannel_v2::VECTOR), 1U);
    EXPECT_EQ(system.addChannel("odd", 42), 2U);
    EXPECT_EQ(system.channelCount(), 3U);
    EXPECT_EQ(system.channel(2).id, 2U);
    EXPECT_EQ(system.channel(2).type, 42U);
    EXPECT_EQ(system.channelId("velocity"), 1U);
    EXPECT_EQ(system.channelId("vel"), ParticleChannel_v2::NONE);
    EXPECT_EQ(system.channelId(nullptr), 4294967295U);
    EXPECT_EQ(system.findChannel(1), &system.channel(1));
    EXPECT_EQ(system.findChannel(3), nullptr);
}

TEST_F(ParticleSystem_v2_test, aNameBelongsToOneChannel) {
    EXPECT_EQ(system.addChannel("position", ParticleChannel_v2::VECTOR), 0U);
    EXPECT_EQ(system.addChannel("position", ParticleChannel_v2::VECTOR), 0U);
    EXPECT_EQ(system.addChannel("position", ParticleChannel_v2::SCALAR), ParticleChannel_v2::NONE);
    EXPECT_EQ(system.addChannel(nullptr, ParticleChannel_v2::SCALAR), ParticleChannel_v2::NONE);
    EXPECT_EQ(system.channelCount(), 1U);
}

TEST_F(ParticleSystem_v2_test, dataHasTheTypeOfItsChannel) {
    fill(3);
    unsigned int const odd = system.addChannel("odd", 42);
    unsigned int const late = system.addChannel("late", ParticleChannel_v2::VECTOR);
    ParticleSystemChunk_v2* const chunk = system.firstChunk();
    EXPECT_NE(chunk->channelData(position)->asVectors(), nullptr);
    EXPECT_EQ(chunk->channelData(position)->asFloats(), nullptr);
    EXPECT_EQ(chunk->channelData(density)->asVectors(), nullptr);
    EXPECT_NE(chunk->channelData(density)->asFloats(), nullptr);
    EXPECT_EQ(chunk->channelData(odd)->asVectors(), nullptr);
    EXPECT_EQ(chunk->channelData(odd)->asFloats(), nullptr);
    EXPECT_EQ(chunk->channelData(late)->asVectors()[2].z, 0) << "a new channel is 0";
    EXPECT_EQ(chunk->channelData(late + 1), nullptr);
}

TEST_F(ParticleSystem_v2_test, scalarsHaveTwoZerosBehindTheLastOne) {
    // Deliberate (scalar-stride): the last particle's color is its own value and the next two.
    fill(5);
    float const* const values = system.firstChunk()->channelData(density)->asFloats();
    EXPECT_EQ(values[4], 4);
    EXPECT_EQ(values[5], 0);
    EXPECT_EQ(values[6], 0);
}

TEST_F(ParticleSystem_v2_test, virtualOperationsStandInTheirOrder) {
    using Data = ParticleChannelChunkData_v2;
    auto const vectors = member_slots::slotOf<Data, Vector3<float>*()>(&Data::asVectors);
    EXPECT_EQ((member_slots::slotOf<Data, float*()>(&Data::asFloats)), vectors + 1);
    EXPECT_EQ((member_slots::slotOf<Data, void(Array<unsigned int> const&)>(&Data::reorder)), vectors + 2);

    using Renderer = Particles_RL_v2;
    EXPECT_EQ((member_slots::slotOf<Renderer, void()>(&Renderer::clear)), 2U);
    EXPECT_EQ(
        (member_slots::slotOf<Renderer, void(ParticleSystem_v2 const&, bool, bool, float const&, float const&,
                                             float const&, Color4<float> const&, Color4<float> const&)>(
            &Renderer::render)),
        3U);
}

// == Chunks ==

TEST_F(ParticleSystem_v2_test, anEmptySystemHasNoChunks) {
    EXPECT_EQ(system.size(), 0U);
    EXPECT_EQ(system.firstChunk(), nullptr);
    EXPECT_EQ(system.lastChunk(), nullptr);
    system.addParticles(0);
    EXPECT_EQ(system.chunkCount(), 0U);
    EXPECT_EQ(system.begin_rawIteration().size(), 0U);
    EXPECT_THAT(numbers(), IsEmpty());
}

TEST_F(ParticleSystem_v2_test, theLastChunkIsPartlyFull) {
    fill(2 * FULL + 10);
    EXPECT_EQ(system.size(), 2 * FULL + 10);
    EXPECT_EQ(system.chunkCount(), 3U);
    EXPECT_EQ(system.firstChunk()->count(), FULL);
    EXPECT_EQ(system.firstChunk()->freeSlots(), 0U);
    EXPECT_EQ(system.lastChunk()->count(), 10U);
    EXPECT_EQ(system.lastChunk()->freeSlots(), FULL - 10);
    EXPECT_EQ(system.lastChunk()->next(), nullptr);
    EXPECT_EQ(system.firstChunk()->next()->next(), system.lastChunk());
}

TEST_F(ParticleSystem_v2_test, particlesAreAppendedBehindTheOthers) {
    fill(FULL - 1);
    system.addParticles(3);
    EXPECT_EQ(system.chunkCount(), 2U);
    EXPECT_EQ(system.firstChunk()->count(), FULL);
    EXPECT_EQ(system.lastChunk()->count(), 2U);
    std::vector<float> const all = numbers();
    EXPECT_EQ(all[FULL - 2], static_cast<float>(FULL - 2));
    EXPECT_EQ(all[FULL - 1], 0) << "new values are 0";
    EXPECT_EQ(all[FULL + 1], 0) << "new values are 0";
}

TEST_F(ParticleSystem_v2_test, particlesMayComeOneByOne) {
    position = system.addChannel("position", ParticleChannel_v2::VECTOR);
    density = system.addChannel("density", ParticleChannel_v2::SCALAR);
    for (unsigned int k = 0; k < FULL + 5; ++k) {
        system.addParticles(1);
        ParticleSystemChunk_v2* const chunk = system.lastChunk();
        chunk->channelData(position)->asVectors()[chunk->count() - 1].y = static_cast<float>(k);
        chunk->channelData(density)->asFloats()[chunk->count() - 1] = static_cast<float>(k);
    }
    std::vector<float> const all = numbers();
    ASSERT_EQ(all.size(), FULL + 5);
    for (unsigned int k = 0; k < all.size(); ++k) {
        ASSERT_EQ(all[k], static_cast<float>(k));
    }
}

// == Release and compaction ==

TEST_F(ParticleSystem_v2_test, releasedParticlesAreNotVisited) {
    fill(6);
    ParticleSystemChunk_v2* const chunk = system.firstChunk();
    EXPECT_TRUE(chunk->isCompacted());
    EXPECT_TRUE(chunk->release(0));
    EXPECT_TRUE(chunk->release(3));
    EXPECT_FALSE(chunk->release(3)) << "it is gone already";
    EXPECT_FALSE(chunk->release(6)) << "there is no such slot";
    EXPECT_FALSE(chunk->isCompacted());
    EXPECT_EQ(system.size(), 4U);
    EXPECT_EQ(chunk->count(), 4U);
    EXPECT_EQ(chunk->freeSlots(), FULL - 4);
    EXPECT_THAT(numbers(), ElementsAre(1, 2, 4, 5));
}

TEST_F(ParticleSystem_v2_test, compactionMovesTheLivingToTheFront) {
    fill(FULL);
    ParticleSystemChunk_v2* const chunk = system.firstChunk();
    std::vector<float> kept;
    for (unsigned int slot = 0; slot < FULL; ++slot) {
        if (slot % 3 == 0 || slot > 16000) {
            EXPECT_TRUE(chunk->release(slot));
        } else {
            kept.push_back(static_cast<float>(slot));
        }
    }
    chunk->compact();
    EXPECT_TRUE(chunk->isCompacted());
    EXPECT_EQ(chunk->count(), kept.size());
    for (unsigned int k = 0; k < chunk->count(); ++k) {
        ASSERT_EQ(chunk->entries()[k].key, ParticleEntry_v2::LIVING);
        ASSERT_EQ(chunk->entries()[k].slot, k);
    }
    std::vector<float> all = numbers();
    EXPECT_EQ(all.front(), chunk->channelData(density)->asFloats()[0]);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, kept) << "the same particles, whatever their order";
}

TEST_F(ParticleSystem_v2_test, aFullChunkStaysAsItIs) {
    fill(FULL);
    system.firstChunk()->compact();
    std::vector<float> const all = numbers();
    for (unsigned int k = 0; k < FULL; ++k) {
        ASSERT_EQ(all[k], static_cast<float>(k));
    }
}

TEST_F(ParticleSystem_v2_test, slotsOfReleasedParticlesAreGivenOutAgain) {
    fill(4);
    system.firstChunk()->release(1);
    system.firstChunk()->release(2);
    system.addParticles(2);
    EXPECT_EQ(system.size(), 4U);
    EXPECT_EQ(system.firstChunk()->count(), 4U);
    std::vector<float> all = numbers();
    EXPECT_EQ(all[2], 0) << "a new particle's values are 0, not those of the one before it";
    EXPECT_EQ(all[3], 0);
    EXPECT_TRUE(system.firstChunk()->release(3));
    EXPECT_EQ(system.size(), 3U);
}

TEST_F(ParticleSystem_v2_test, allParticlesOfAChunkMayBeReleased) {
    fill(FULL + 2);
    for (unsigned int slot = 0; slot < FULL; ++slot) {
        system.firstChunk()->release(slot);
    }
    EXPECT_EQ(system.size(), 2U);
    EXPECT_THAT(numbers(), ElementsAre(FULL, FULL + 1));
    Array<unsigned short> const counts = system.begin_rawIteration();
    EXPECT_THAT(std::vector<unsigned short>(counts.begin(), counts.end()), ElementsAre(0, 2));
    EXPECT_THAT(numbers(), ElementsAre(FULL, FULL + 1));
}

TEST_F(ParticleSystem_v2_test, reorderingTakesOnlyWhatIsThere) {
    fill(4);
    ParticleChannelChunkData_v2* const data = system.firstChunk()->channelData(density);
    data->reorder({});
    EXPECT_EQ(data->asFloats()[3], 3);
    data->reorder({3, 99, 1});
    EXPECT_THAT(std::vector<float>(data->asFloats(), data->asFloats() + 4), ElementsAre(3, 0, 1, 3));
}

// == For renderers ==

TEST_F(ParticleSystem_v2_test, rawIterationCompactsAndCountsEachChunk) {
    fill(FULL + 7);
    system.firstChunk()->release(5);
    system.lastChunk()->release(0);
    Array<unsigned short> const counts = system.begin_rawIteration();
    EXPECT_THAT(std::vector<unsigned short>(counts.begin(), counts.end()), ElementsAre(FULL - 1, 6));
    EXPECT_TRUE(system.firstChunk()->isCompacted());
    EXPECT_TRUE(system.lastChunk()->isCompacted());
}

TEST_F(ParticleSystem_v2_test, rawIterationGrowsAsArraysDo) {
    fill(8 * FULL + 1);
    EXPECT_EQ(system.begin_rawIteration().capacity(), 13U);
    EXPECT_EQ(system.getChannelData(position).capacity(), 9U) << "known beforehand";
}

TEST_F(ParticleSystem_v2_test, channelDataComesChunkByChunk) {
    fill(FULL + 1);
    Array<ParticleChannelChunkData_v2*> const data = system.getChannelData(density);
    ASSERT_EQ(data.size(), 2U);
    EXPECT_EQ(data[0], system.firstChunk()->channelData(density));
    EXPECT_EQ(data[1], system.lastChunk()->channelData(density));
    Array<ParticleChannelChunkData_v2*> const none = system.getChannelData(ParticleChannel_v2::NONE);
    EXPECT_THAT(std::vector<ParticleChannelChunkData_v2*>(none.begin(), none.end()),
                ElementsAre(nullptr, nullptr));
}

TEST_F(ParticleSystem_v2_test, theContainerIteratorGivesEveryParticleOnce) {
    fill(3);
    system.firstChunk()->release(1);
    ParticleContainerIterator_v2 iterator(&system);
    ParticleContainerIteratorBase_v2& base = iterator;
    EXPECT_EQ(base.size(), 2U);
    EXPECT_TRUE(base.end()) << "before begin()";
    std::vector<float> seen;
    for (base.begin(); !base.end();) {
        auto const [channels, index] = base.next();
        seen.push_back(channels[density]->asFloats()[index]);
    }
    EXPECT_THAT(seen, ElementsAre(0, 2));
    ParticleContainerIterator_v2 nothing(nullptr);
    nothing.begin();
    EXPECT_TRUE(nothing.end());
    EXPECT_EQ(nothing.size(), 0U);
}

TEST_F(ParticleSystem_v2_test, iteratorsOfTwoSystemsDiffer) {
    ParticleSystem_v2 other;
    ParticleSystemConstIterator_v2 a;
    ParticleSystemConstIterator_v2 b;
    a.setEnd(&system);
    b.setEnd(&other);
    EXPECT_NE(a, b);
    b.setBegin(&system);
    EXPECT_EQ(a, b) << "without particles the beginning is the end";
}

}  // namespace
}  // namespace vellum
