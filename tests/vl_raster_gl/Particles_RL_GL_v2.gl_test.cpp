#include "Particles_RL_GL_v2.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/counted_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "internal/gl_api.h"

// The picture of every drawing path, and the memory that drawing takes.

namespace vellum {
namespace {

using Mode = Particles_RL_GL_v2_ns::RenderMode;
using Magnitude = Particles_RL_GL_v2_ns::RenderMagnitude;

constexpr unsigned int NONE = ParticleChannel_v2::NONE;

/// Answers any amount of free memory.
class RoomyLayer : public Core_RL_GL {
public:
    unsigned int getFreeGpuMemory() override { return freeKilobytes; }

    unsigned int freeKilobytes = 1U << 20;
};

/// A drawing path.
struct Way {
    char const* name;
    bool useVbo;
    bool useShaders;
    Mode::type mode;
};

class Particles_RL_GL_v2_drawn_test : public gl_spy::GlTest, public testing::WithParamInterface<Way> {
protected:
    static constexpr unsigned int SIDE = 16;  // particles in a row and in a column

    void SetUp() override {
        GlTest::SetUp();
        glViewport(0, 0, width, height);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        particles.init();
        particles.setRenderMode(GetParam().mode);
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        system.addChannel("velocity", ParticleChannel_v2::VECTOR);
        system.addParticles(SIDE * SIDE);
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            system.firstChunk()->channelData(0)->asVectors()[k] = {place(k % SIDE), place(k / SIDE), 0};
            system.firstChunk()->channelData(1)->asVectors()[k] = {speed(k), 0, 0};
        }
    }

    void TearDown() override {
        particles.clear();
        particles.releaseEffects();
        GlTest::TearDown();
    }

    static float place(unsigned int const& k) { return (static_cast<float>(k) + 0.5F) / SIDE * 2 - 1; }
    static float speed(unsigned int const& k) { return static_cast<float>(k) / (SIDE * SIDE - 1); }

    bool isEffect() const { return GetParam().useShaders; }

    /// In pixels for points, in fractions of the picture for spheres and of the vector for arrows.
    float size() const {
        if (!isEffect() || GetParam().mode == Mode::POINTS) {
            return 9;
        }
        return GetParam().mode == Mode::SPHERES ? 0.1F : 0.04F;
    }

    void draw(bool const& rebuild, float const& percent = 100, unsigned int const& channel = 1) {
        particles.render(system, false, rebuild, 1, 0, 1, {0, 0, 1, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, size(),
                         channel, percent, GetParam().useVbo, GetParam().useShaders, Magnitude::LENGTH);
    }

    /// The brightest of the pixels of a picture around a particle, which lines may meet or miss by one.
    static Pixel around(unsigned int const& k, std::vector<unsigned char> const& picture) {
        int const x = static_cast<int>(128 + 128 * place(k % SIDE));
        int const y = static_cast<int>(128 - 128 * place(k / SIDE));
        Pixel best{};
        for (int dy = -1; dy <= 0; ++dy) {
            Pixel pixel{};
            std::copy_n(picture.begin() + std::ptrdiff_t((y + dy) * width + x) * 4, 4, pixel.begin());
            best = pixel[0] + pixel[2] > best[0] + best[2] ? pixel : best;
        }
        return best;
    }

    unsigned int litParticles() {
        std::vector<unsigned char> const picture = readPixels();
        unsigned int lit = 0;
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            Pixel const pixel = around(k, picture);
            lit += pixel[0] + pixel[2] > 60 ? 1 : 0;
        }
        return lit;
    }

    RoomyLayer layer;
    Particles_RL_GL_v2 particles;
    ParticleSystem_v2 system;
};

/// For the paths whose particles do not cover their neighbors.
class Particles_RL_GL_v2_count_drawn_test : public Particles_RL_GL_v2_drawn_test {};

TEST_P(Particles_RL_GL_v2_drawn_test, colorsRunOverRange) {
    draw(true);
    savePicture(std::string("particles_") + GetParam().name);
    std::vector<unsigned char> const picture = readPixels();
    float const shade =
        isEffect() && GetParam().mode == Mode::SPHERES ? 0.5F * 0.5F / std::sqrt(1.5F) + 0.5F : 1;
    // Half a pixel beside the middle of a sphere, which is 6 pixels in radius, the surface is tilted by a
    // twelfth.
    float const tolerance = shade < 1 ? 14 : 3;
    // Short arrows are less than a pixel long, and the last particle's speed is the clamp color of arrows.
    for (unsigned int k = 100; k < SIDE * SIDE - 1; k += 5) {
        Pixel const pixel = around(k, picture);
        EXPECT_NEAR(pixel[0], 255 * speed(k) * shade, tolerance) << k;
        EXPECT_NEAR(pixel[1], 0, 3) << k;
        EXPECT_NEAR(pixel[2], 255 * (1 - speed(k)) * shade, tolerance) << k;
    }
}

TEST_P(Particles_RL_GL_v2_drawn_test, framesWithoutRebuildShowSamePicture) {
    draw(true);
    std::vector<unsigned char> const first = readPixels();
    for (int frame = 0; frame < 3; ++frame) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw(false);
        EXPECT_EQ(readPixels(), first) << "frame " << frame;
    }
}

TEST_P(Particles_RL_GL_v2_count_drawn_test, percentageShowsThatManyParticles) {
    draw(true, 50);
    EXPECT_EQ(litParticles(), SIDE * SIDE / 2);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw(true, 0);
    EXPECT_EQ(litParticles(), 0U);
}

TEST_P(Particles_RL_GL_v2_count_drawn_test, releasedParticlesAreGone) {
    for (unsigned int slot = 0; slot < SIDE; ++slot) {
        system.firstChunk()->release(slot);
    }
    draw(true);
    EXPECT_EQ(litParticles(), SIDE * SIDE - SIDE);
}

TEST_P(Particles_RL_GL_v2_drawn_test, steadyFramesTakeNoMemory) {
    system.addParticles(40000);
    // Outside the view: nothing has to be drawn.
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        std::fill_n(chunk->channelData(0)->asVectors(), chunk->count(), Vector3<float>{4, 4, 4});
    }
    for (int frame = 0; frame < 3; ++frame) {
        draw(true);
        draw(false);
    }
    std::size_t const before = counted_memory::allocations();
    for (int frame = 0; frame < 5; ++frame) {
        draw(true);
        draw(false);
        draw(true, 33);
        draw(true, 90);
        draw(true);
    }
    // Drivers allocate with malloc, not with the operators.
    EXPECT_EQ(counted_memory::allocations(), before);
}

class Particles_RL_GL_v2_memory_drawn_test : public gl_spy::GlTest {};

TEST_F(Particles_RL_GL_v2_memory_drawn_test, drawingFromChunksTakesFivePercentMoreThanParticles) {
    constexpr unsigned int PARTICLES = 1000000;
    RoomyLayer const layer;
    Particles_RL_GL_v2 particles;
    particles.init();
    auto const draw = [&](ParticleSystem_v2 const& system, float const& percent) {
        particles.render(system, false, true, 1, 0, 1, {0, 0, 1, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, 1, 1,
                         percent, false, true, Magnitude::LENGTH);
    };
    auto const addChannels = [](ParticleSystem_v2& system) {
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    };
    ParticleSystem_v2 few;
    addChannels(few);
    few.addParticles(10);
    draw(few, 100);  // the driver compiles the effect now

    std::size_t const before = counted_memory::markHeld();
    ParticleSystem_v2 system;
    addChannels(system);
    system.addParticles(PARTICLES);
    for (float const percent : {100.0F, 40.0F, 100.0F}) {
        draw(system, percent);
    }
    std::size_t const taken = counted_memory::mostHeld() - before;
    EXPECT_GE(taken, std::size_t{28} * PARTICLES) << "the count of bytes is wrong";
    EXPECT_LE(static_cast<double>(taken), 1.05 * 29 * PARTICLES);
    particles.clear();
    particles.releaseEffects();
}

TEST_P(Particles_RL_GL_v2_drawn_test, nanRaisesNoError) {
    float const infinite = HUGE_VALF;
    system.firstChunk()->channelData(0)->asVectors()[0] = {std::nanf(""), infinite, -infinite};
    system.firstChunk()->channelData(1)->asVectors()[1] = {std::nanf(""), infinite, -infinite};
    draw(true);
    draw(true, std::nanf(""));
    draw(true, -10);
    draw(true, 1e30F);
    draw(true, 100, NONE);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_P(Particles_RL_GL_v2_drawn_test, systemWithoutParticlesRaisesNoError) {
    ParticleSystem_v2 const empty;
    particles.render(empty, false, true, 1, 0, 1, {0, 0, 1, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, 1, NONE, 100,
                     GetParam().useVbo, GetParam().useShaders, Magnitude::LENGTH);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_P(Particles_RL_GL_v2_drawn_test, littleMemoryShowsSamePicture) {
    draw(true);
    std::vector<unsigned char> const usual = readPixels();
    particles.clear();
    particles.releaseEffects();
    Particles_RL_GL_v2 other;
    other.init();
    other.setRenderMode(GetParam().mode);
    layer.freeKilobytes = 0;  // the buffer is refused where it is sized
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    other.render(system, false, true, 1, 0, 1, {0, 0, 1, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, size(), 1, 100,
                 GetParam().useVbo, GetParam().useShaders, Magnitude::LENGTH);
    std::vector<unsigned char> const fallback = readPixels();
    other.clear();
    other.releaseEffects();
    EXPECT_EQ(fallback, usual);
}

const std::vector<Way> WAYS_OF_DISCS{
    {"buffer", true, false, Mode::POINTS},        {"memory", false, false, Mode::POINTS},
    {"bufferPoints", true, true, Mode::POINTS},   {"chunkPoints", false, true, Mode::POINTS},
    {"bufferSpheres", true, true, Mode::SPHERES}, {"chunkSpheres", false, true, Mode::SPHERES}};
const std::vector<Way> WAYS_OF_ARROWS{{"bufferArrows", true, true, Mode::ARROWS},
                                      {"chunkArrows", false, true, Mode::ARROWS}};

std::string nameOf(testing::TestParamInfo<Way> const& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Discs, Particles_RL_GL_v2_drawn_test, testing::ValuesIn(WAYS_OF_DISCS), nameOf);
INSTANTIATE_TEST_SUITE_P(Arrows, Particles_RL_GL_v2_drawn_test, testing::ValuesIn(WAYS_OF_ARROWS), nameOf);
INSTANTIATE_TEST_SUITE_P(Discs, Particles_RL_GL_v2_count_drawn_test, testing::ValuesIn(WAYS_OF_DISCS),
                         nameOf);

}  // namespace
}  // namespace vellum
