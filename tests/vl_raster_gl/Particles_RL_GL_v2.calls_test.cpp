#include "particle_calls.h"

#include "glsl_shader/PointRendering_shader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The calls of every drawing path, and the bits in its buffers. Scripts play the drivers.

namespace vellum {

namespace {

using namespace particle_calls;
using gl_spy::as;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// == The dispatcher ==

TEST(Particles_RL_GL_v2_calls_test, dispatcherTakesFirstAvailablePath) {
    Particles const particles(20);
    for (unsigned int bits = 0; bits < 32; ++bits) {
        bool const hasShaders = (bits & 1) != 0;
        bool const hasBuffers = (bits & 2) != 0;
        bool const hasMemory = (bits & 4) != 0;
        Arguments a;
        a.useShaders = (bits & 8) != 0;
        a.useVbo = (bits & 16) != 0;
        Rig rig(hasMemory ? PLENTY : 25 * 1024, hasShaders ? "2.0" : "1.5.0",
                hasBuffers ? "ARB_vertex_buffer_object" : "GL_ARB_vertex_buffer");
        gl_spy::Recording const recording;
        rig.renderer.dispatch(particles.system, a);

        bool const withEffect = hasShaders && a.useShaders;
        bool const withVbo = hasBuffers && hasMemory && a.useVbo;
        Texts const vbo = joined({{GENERATED}, grown(1, 20), uploaded(1, 20)});
        Texts expected{FREE};
        unsigned int lastPath = 3;
        if (withEffect && withVbo) {
            unsigned int const id = rig.renderer.vboId;
            expected = joined({{FREE},
                               OPENED_POINTS,
                               {GENERATED},
                               grown(id, 20),
                               uploaded(id, 20),
                               drawnFromVbo(id, 20, {}),
                               ENDED});
            lastPath = 1;
        } else if (withEffect) {
            expected = joined({{FREE}, OPENED_POINTS, drawnChunk(arrays(20)), ENDED});
        } else if (withVbo) {
            expected = joined({{FREE}, vbo, drawnFromVbo(1, 20, {SIZED})});
        } else {
            expected = joined({{FREE, SIZED}, drawnBatch(20)});
            lastPath = 4;
        }
        EXPECT_EQ(ownCalls(recording), expected) << bits;
        EXPECT_EQ(rig.renderer.lastPath, lastPath) << bits;
        EXPECT_EQ(recording.named("glGetString").at(0).text(), "glGetString(GL_VERSION)");
    }
}

TEST(Particles_RL_GL_v2_calls_test, dispatcherFallsBackInSameCallWhenBufferIsRefused) {
    Particles const particles(22);
    for (bool const withEffect : {false, true}) {
        Rig rig(0);  // the memory rule wraps around, and the store is refused
        Arguments a;
        a.useShaders = withEffect;
        gl_spy::Recording const recording;
        rig.renderer.dispatch(particles.system, a);
        unsigned int const id = rig.renderer.vboId;
        Texts const refused{GENERATED, FREE, deleted(id)};
        EXPECT_EQ(
            ownCalls(recording),
            withEffect
                ? joined(
                      {{FREE}, OPENED_POINTS, refused, ENDED, OPENED_POINTS, drawnChunk(arrays(22)), ENDED})
                : joined({{FREE}, refused, {SIZED}, drawnBatch(22)}));
        EXPECT_EQ(rig.renderer.lastPath, withEffect ? 3U : 4U);
    }
}

TEST(Particles_RL_GL_v2_calls_test, dispatcherPassesRebuildOnWithoutEffect) {
    Particles particles(30);
    Rig rig;
    Arguments a;
    a.useVbo = false;
    rig.renderer.dispatch(particles.system, a);
    std::vector<std::uint32_t> const before = rig.hostBits(30);
    particles.system.firstChunk()->channelData(0)->asVectors()[0].x = 77;
    a.rebuild = false;
    rig.renderer.dispatch(particles.system, a);
    EXPECT_EQ(rig.hostBits(30), before);
    a.rebuild = true;
    rig.renderer.dispatch(particles.system, a);
    EXPECT_EQ(rig.hostBits(30), recordBits(particles.system, a, memoryColor));
}

TEST(Particles_RL_GL_v2_calls_test, dispatcherAsksVirtualSupportAndMemoryOfLayer) {
    class AnsweringLayer : public Core_RL_GL {
    public:
        unsigned int getFreeGpuMemory() override {
            ++memoryQueries;
            return PLENTY;
        }
        bool checkShaderSupport() const override { return false; }
        unsigned int memoryQueries = 0;
    };
    Rig rig(25 * 1024);  // another amount than the layer below answers
    AnsweringLayer layer;
    Particles const particles(40);
    Arguments a;
    a.useShaders = true;
    gl_spy::Recording const recording;
    rig.renderer.dispatch(particles.system, a);
    EXPECT_EQ(rig.renderer.lastPath, 3U);
    EXPECT_EQ(layer.memoryQueries, 2U) << "for the rule, and for the size of the store";
    EXPECT_EQ(recording.count("glMapBuffer"), 1U);
    EXPECT_EQ(recording.count("glPushAttrib"), 0U);
    VL_Raster = &rig.layer;
}

// == The buffer object ==

TEST(Particles_RL_GL_v2_calls_test, bufferWithoutEffectIsMadeSizedFilledAndDrawn) {
    Rig rig;
    Particles const particles(200);
    Arguments const a;
    bool drawn = false;
    EXPECT_EQ(callsOf([&] { drawn = rig.renderer.vbo(particles.system, a); }),
              joined({{GENERATED}, grown(1, 200), uploaded(1, 200), drawnFromVbo(1, 200, {SIZED})}));
    EXPECT_TRUE(drawn);
    EXPECT_EQ(rig.renderer.lastPath, 3U);
    EXPECT_EQ(rig.renderer.vboCapacity, 200U);
    EXPECT_EQ(rig.renderer.vboSizeKB, 4U);
    EXPECT_EQ(rig.renderer.vboParticleCount, 200U);
    EXPECT_THAT(rig.layer.asked("getError"), ElementsAre("getError(renderFromVboNoShaders, 1109)"));
}

TEST(Particles_RL_GL_v2_calls_test, colorsOfBufferLieBehindPositions) {
    Rig rig;
    Particles const particles(3);
    gl_spy::Recording const recording;
    rig.renderer.vbo(particles.system, Arguments{});
    EXPECT_EQ(recording.named("glVertexPointer").at(0).addresses.at(0), 0U);
    EXPECT_EQ(recording.named("glColorPointer").at(0).addresses.at(0), 12U);
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyBufferWithoutEffectIsRefilledInEveryFrame) {
    Rig rig;
    Particles const particles(200);
    Arguments a;
    rig.renderer.vbo(particles.system, a);
    for (bool const rebuild : {false, true, false}) {
        a.rebuild = rebuild;
        EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }),
                  joined({uploaded(1, 200), drawnFromVbo(1, 200, {SIZED})}));
    }
}

TEST(Particles_RL_GL_v2_calls_test, bufferOfEffectIsFilledOnceAndAgainOnlyOnRebuild) {
    for (unsigned int const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        Rig rig;
        rig.renderer.setRenderMode(Mode::type(mode));
        Particles const particles(200);
        Arguments a;
        a.channel = particles.velocity;
        Texts const opened = mode == 1 ? OPENED_POINTS : OPENED;
        gl_spy::Recording recording;
        EXPECT_TRUE(rig.renderer.vboEffect(particles.system, a));
        unsigned int const id = rig.renderer.vboId;
        unsigned int const program = programOf(recording);
        EXPECT_EQ(
            ownCalls(recording),
            joined(
                {opened, {GENERATED}, grown(id, 200), uploaded(id, 200), drawnFromVbo(id, 200, {}), ENDED}));
        EXPECT_EQ(rig.renderer.lastPath, 1U);
        EXPECT_THAT(rig.layer.asked("getError"), ElementsAre("getError(renderFromVboWithShaders, 884)"));

        Texts const drawn = drawnFromVbo(id, 200, {});
        a.rebuild = false;
        EXPECT_EQ(callsOf([&] { rig.renderer.vboEffect(particles.system, a); }),
                  joined({openedPass(mode, program), drawn, LINES, CLOSED}));
        rig.renderer.lastPath = 2;
        EXPECT_EQ(callsOf([&] { rig.renderer.vboEffect(particles.system, a); }),
                  joined({openedPass(mode, program), drawn, LINES, CLOSED}));
        a.rebuild = true;
        EXPECT_EQ(callsOf([&] { rig.renderer.vboEffect(particles.system, a); }),
                  joined({openedPass(mode, program), uploaded(id, 200), drawn, LINES, CLOSED}));
        a.rebuild = false;
        for (unsigned int const lastPath : {0U, 3U, 4U}) {
            rig.renderer.lastPath = lastPath;
            EXPECT_EQ(callsOf([&] { rig.renderer.vboEffect(particles.system, a); }),
                      joined({openedPass(mode, program), uploaded(id, 200), drawn, LINES, CLOSED}));
        }
    }
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyBufferWithoutEffectAfterOneDrawsRawValues) {
    Rig rig;
    Particles const particles(200);
    Arguments a;
    a.channel = particles.velocity;
    rig.renderer.vboEffect(particles.system, a);
    unsigned int const id = rig.renderer.vboId;
    a.rebuild = false;
    EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }), drawnFromVbo(id, 200, {SIZED}));
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, effectColor));
    EXPECT_EQ(rig.renderer.lastPath, 3U);
    rig.renderer.vbo(particles.system, a);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, vboColor));
}

TEST(Particles_RL_GL_v2_calls_test, onlyRebuildCountsParticlesOfBuffer) {
    Rig rig;
    Particles const particles(200);
    Arguments a;
    a.rebuild = false;
    rig.renderer.vbo(particles.system, a);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, vboColor));
    EXPECT_EQ(rig.renderer.vboParticleCount, 0U);
    a.rebuild = true;
    a.percent = 50;
    rig.renderer.vbo(particles.system, a);
    EXPECT_EQ(rig.renderer.vboParticleCount, 100U);
    EXPECT_EQ(rig.renderer.vboCapacity, 200U);
    EXPECT_EQ(rig.renderer.vboSizeKB, 2U);
}

TEST(Particles_RL_GL_v2_calls_test, bufferThatGrowsIsSizedUnderItsOwnName) {
    Rig rig;
    Particles particles(50);
    Arguments const a;
    rig.renderer.vbo(particles.system, a);
    particles.system.addParticles(10);
    EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }),
              joined({grown(1, 60), uploaded(1, 60), drawnFromVbo(1, 60, {SIZED})}));
    EXPECT_EQ(rig.renderer.vboCapacity, 60U);
}

TEST(Particles_RL_GL_v2_calls_test, fewerParticlesAreFirstOnesOfEffectBuffer) {
    Rig rig;
    Particles const particles(100);
    Arguments a;
    rig.renderer.vboEffect(particles.system, a);
    a.rebuild = false;
    a.percent = 50;
    gl_spy::Recording const recording;
    rig.renderer.vboEffect(particles.system, a);
    EXPECT_EQ(recording.count("glMapBuffer"), 0U);
    EXPECT_THAT(recording.texts(), Contains(arrays(50)));
}

TEST(Particles_RL_GL_v2_calls_test, storeAboveFreeAndOwnKilobytesIsRefused) {
    struct Row {
        int freeKilobytes;
        unsigned int ownKilobytes;
        unsigned int particles;
        bool taken;
    };
    // Sizes are rounded to whole kilobytes: 21 particles give 0, and 64 particles (1.5 KB) give 2.
    for (Row const& row :
         {Row{0, 0, 21, true}, Row{0, 0, 22, false}, Row{1, 0, 63, true}, Row{1, 0, 64, false},
          Row{0, 2, 106, true}, Row{0, 2, 107, false}, Row{1, 1, 106, true}, Row{1, 1, 107, false}}) {
        Particles const particles(row.particles);
        for (bool const withEffect : {false, true}) {
            Rig rig(row.freeKilobytes);
            rig.renderer.vboSizeKB = row.ownKilobytes;
            bool taken = false;
            gl_spy::Recording const recording;
            if (withEffect) {
                taken = rig.renderer.vboEffect(particles.system, Arguments{});
            } else {
                taken = rig.renderer.vbo(particles.system, Arguments{});
            }
            EXPECT_EQ(taken, row.taken) << row.freeKilobytes << " " << row.particles;
            EXPECT_EQ(recording.count("glDeleteBuffers"), row.taken ? 0U : 1U);
            EXPECT_EQ(recording.count("glDrawArrays"), row.taken ? 1U : 0U);
            EXPECT_EQ(rig.layer.currentFillingFront(), FILLING_LINES);
        }
    }
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyRefusedBufferIsDeletedAndItsNameKept) {
    Rig rig(0);
    Particles const particles(22);
    Arguments a;
    EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }), (Texts{GENERATED, FREE, deleted(1)}));
    EXPECT_EQ(rig.renderer.vboId, 1U);
    EXPECT_EQ(rig.renderer.vboCapacity, 0U);
    EXPECT_EQ(rig.renderer.lastPath, 0U);
    EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }), (Texts{FREE, deleted(1)}));
    rig.driver.integer(FREE_MEMORY, {PLENTY});
    EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }),
              joined({grown(1, 22), uploaded(1, 22), drawnFromVbo(1, 22, {SIZED})}));
}

TEST(Particles_RL_GL_v2_calls_test, missingOrSmallStoreIsFilledWithoutRebuild) {
    Rig rig;
    Particles const particles(100);
    Arguments a;
    Arguments unchanged;
    unchanged.rebuild = false;
    rig.renderer.vboEffect(particles.system, a);
    rig.renderer.clear();
    rig.renderer.vboEffect(particles.system, unchanged);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, effectColor));
    a.percent = 10;
    rig.renderer.vboEffect(particles.system, a);
    rig.renderer.vboEffect(particles.system, unchanged);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, unchanged, effectColor));
}

TEST(Particles_RL_GL_v2_calls_test, bufferThatCannotBeMappedIsRefused) {
    Particles const particles(10);
    for (bool const withEffect : {false, true}) {
        Rig rig;
        rig.driver.nullMap();
        Arguments a;
        a.useShaders = withEffect;
        gl_spy::Recording const recording;
        rig.renderer.dispatch(particles.system, a);
        EXPECT_EQ(recording.count("glUnmapBuffer"), 0U);
        EXPECT_EQ(recording.count("glDeleteBuffers"), 1U);
        EXPECT_EQ(rig.renderer.lastPath, withEffect ? 3U : 4U);
        EXPECT_EQ(recording.count("glDrawArrays"), 1U);
        EXPECT_EQ(recording.count("glPushAttrib"), recording.count("glPopAttrib"));
    }
}

TEST(Particles_RL_GL_v2_calls_test, emptyBufferIsNotMapped) {
    Rig rig;
    Particles const particles(10);
    Arguments a;
    a.percent = 0;
    EXPECT_EQ(callsOf([&] { rig.renderer.vbo(particles.system, a); }),
              joined({{GENERATED, binding(1), store(0)}, drawnFromVbo(1, 0, {SIZED})}));
}

TEST(Particles_RL_GL_v2_calls_test, pendingErrorsAreTakenAfterMapping) {
    Rig rig;
    Particles const particles(3);
    ASSERT_TRUE(rig.renderer.vbo(particles.system, Arguments{}));
    rig.driver.errors({0x0502, 0x0505});
    EXPECT_TRUE(rig.renderer.vbo(particles.system, Arguments{})) << "the store does not grow";
    EXPECT_EQ(rig.driver.errorsLeft(), 0U);
}

// == Colors ==

/// Every magnitude with every kind of channel, for usual, empty and inverted ranges.
void forAllColors(Particles const& particles, std::function<void(Arguments const&)> const& check) {
    for (unsigned int magnitude = 0; magnitude < 8; ++magnitude) {
        for (unsigned int const channel :
             {NONE, particles.position, particles.velocity, particles.energy, particles.odd}) {
            for (auto const& [low, high] : std::vector<std::pair<float, float>>{
                     {0.25F, 1.75F}, {0.5F, 0.5F}, {1, 1 + 1.2e-7F}, {0, 1e-14F}, {2, 0.5F}, {-1, 0.7F}}) {
                Arguments a;
                a.magnitude = magnitude;
                a.channel = channel;
                a.minMagnitude = low;
                a.maxMagnitude = high;
                SCOPED_TRACE(testing::Message() << "magnitude " << magnitude << ", channel " << channel
                                                << ", from " << low << " to " << high);
                testing::internal::CaptureStderr();
                check(a);
                // Only some of the paths clamp colors outside the range 0 to 1.
                a.minColor = {1.5F, -0.25F, 0.5F, 1};
                a.maxColor = {-0.5F, 2, 1.25F, 1};
                a.maxClampColor = {-1, 3, 0.125F, 1};
                check(a);
                std::string const errors = testing::internal::GetCapturedStderr();
                EXPECT_EQ(errors.empty(), channel != particles.odd);
            }
        }
    }
}

TEST(Particles_RL_GL_v2_calls_test, everyMagnitudeColorsBuffer) {
    Rig rig;
    Particles const particles(64);
    forAllColors(particles, [&](Arguments const& a) {
        rig.renderer.vbo(particles.system, a);
        EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, vboColor));
    });
}

TEST(Particles_RL_GL_v2_calls_test, everyMagnitudeColorsMainMemory) {
    Rig rig;
    Particles const particles(64);
    forAllColors(particles, [&](Arguments const& a) {
        rig.renderer.memory(particles.system, a);
        EXPECT_EQ(rig.hostBits(64), recordBits(particles.system, a, memoryColor));
    });
}

TEST(Particles_RL_GL_v2_calls_test, everyMagnitudeGivesEffectRawValues) {
    Rig rig;
    Particles const particles(64);
    forAllColors(particles, [&](Arguments const& a) {
        rig.renderer.vboEffect(particles.system, a);
        EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, effectColor));
    });
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyNoRangeIsMinimumColorInBufferAndBlackInMemory) {
    Rig rig;
    Particles const particles(1);
    Arguments a;
    a.channel = particles.velocity;
    a.maxMagnitude = a.minMagnitude;
    rig.renderer.vbo(particles.system, a);
    EXPECT_EQ(as<float>(rig.driver.bufferContents(rig.renderer.vboId)),
              (std::vector<float>{0, 0, 0.25F, 0.9F, 0.1F, 0.3F}));
    rig.renderer.memory(particles.system, a);
    EXPECT_EQ(std::vector<float>(rig.renderer.hostBuffer, rig.renderer.hostBuffer + 6),
              (std::vector<float>{0, 0, 0.25F, 0, 0, 0}));
}

TEST(Particles_RL_GL_v2_calls_test, unknownTypeIsReportedWithoutLineEnd) {
    Particles const particles(1);
    Arguments a;
    a.channel = particles.odd;
    Rig rig;
    EXPECT_EQ(errorsOf([&] { rig.renderer.vbo(particles.system, a); }), UNKNOWN_TYPE);
    EXPECT_EQ(errorsOf([&] { rig.renderer.memory(particles.system, a); }), UNKNOWN_TYPE);
    EXPECT_EQ(errorsOf([&] { rig.renderer.vboEffect(particles.system, a); }), UNKNOWN_TYPE);
    EXPECT_EQ(errorsOf([&] { rig.renderer.chunks(particles.system, a); }), UNKNOWN_TYPE);
    a.rebuild = false;
    errorsOf([&] { rig.renderer.memory(particles.system, a); });
    EXPECT_EQ(errorsOf([&] { rig.renderer.memory(particles.system, a); }), "");
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyUnknownTypeIsReportedForEveryParticleOfBuffer) {
    Particles const particles(2);
    Arguments a;
    a.channel = particles.odd;
    Rig rig;
    std::string const twice = std::string(UNKNOWN_TYPE) + UNKNOWN_TYPE;
    EXPECT_EQ(errorsOf([&] { rig.renderer.vbo(particles.system, a); }), twice);
    EXPECT_EQ(errorsOf([&] { rig.renderer.memory(particles.system, a); }), twice);
    EXPECT_EQ(errorsOf([&] { rig.renderer.vboEffect(particles.system, a); }), twice);
    a.percent = 50;
    EXPECT_EQ(errorsOf([&] { rig.renderer.vbo(particles.system, a); }), UNKNOWN_TYPE);
}

TEST(Particles_RL_GL_v2_calls_test, missingChannelHasUnknownType) {
    Particles const particles(40);
    Arguments a;
    a.channel = 123;
    Rig rig;
    testing::internal::CaptureStderr();
    rig.renderer.vbo(particles.system, a);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, vboColor));
    rig.renderer.vboEffect(particles.system, a);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, effectColor));
    rig.renderer.memory(particles.system, a);
    EXPECT_EQ(rig.hostBits(40), recordBits(particles.system, a, memoryColor));
    EXPECT_THAT(ownCallsOf([&] { rig.renderer.chunks(particles.system, a); }), Contains(arrays(40)));
    EXPECT_NE(testing::internal::GetCapturedStderr().find(UNKNOWN_TYPE), std::string::npos);
}

TEST(Particles_RL_GL_v2_calls_test, nanAndInfinityHaveDefinedColors) {
    Particles particles(8);
    auto* const velocity = particles.system.firstChunk()->channelData(particles.velocity)->asVectors();
    auto* const energy = particles.system.firstChunk()->channelData(particles.energy)->asFloats();
    velocity[1] = {NOT_A_NUMBER, INF, -INF};
    velocity[2] = {3e9F, -3e9F, 1e38F};
    energy[1] = NOT_A_NUMBER;
    energy[2] = -INF;
    particles.system.firstChunk()->channelData(0)->asVectors()[3] = {NOT_A_NUMBER, INF, -INF};
    Rig rig;
    Arguments a;
    for (a.magnitude = 0; a.magnitude < 8; ++a.magnitude) {
        for (unsigned int const channel : {particles.velocity, particles.energy}) {
            a.channel = channel;
            SCOPED_TRACE(testing::Message() << "magnitude " << a.magnitude << ", channel " << channel);
            rig.renderer.vbo(particles.system, a);
            EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, vboColor));
            rig.renderer.memory(particles.system, a);
            EXPECT_EQ(rig.hostBits(8), recordBits(particles.system, a, memoryColor));
            rig.renderer.vboEffect(particles.system, a);
            EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, effectColor));
            rig.renderer.chunks(particles.system, a);
        }
    }
}

// == Thinning ==

/// Every buffer holds the particles that even thinning selects, for each kind of channel.
void expectEvenThinning(Particles const& particles) {
    for (unsigned int const channel : {NONE, particles.velocity, particles.energy}) {
        for (float const percent : {0.0F, 0.01F, 10.0F, 33.3F, 50.0F, 61.8F, 99.9F, 100.0F}) {
            Rig rig;
            Arguments a;
            a.channel = channel;
            a.percent = percent;
            unsigned int const target = targetOf(particles.system, percent);
            SCOPED_TRACE(testing::Message()
                         << target << " of " << particles.system.size() << ", channel " << channel);
            EXPECT_THAT(callsOf([&] { rig.renderer.vbo(particles.system, a); }), Contains(arrays(target)));
            EXPECT_TRUE(rig.vboBits() == recordBits(particles.system, a, vboColor));
            EXPECT_EQ(rig.vboBits().size(), target * std::size_t{6});
            rig.renderer.vboEffect(particles.system, a);
            EXPECT_TRUE(rig.vboBits() == recordBits(particles.system, a, effectColor));
            EXPECT_THAT(callsOf([&] { rig.renderer.memory(particles.system, a); }), Contains(arrays(target)));
            EXPECT_TRUE(rig.hostBits(target) == recordBits(particles.system, a, memoryColor));
        }
    }
}

TEST(Particles_RL_GL_v2_calls_test, anyPercentageThinsBuffersEvenly) {
    for (unsigned int const count : {1U, 10U, 999U, CHUNK + 700}) {
        Particles particles(count);
        expectEvenThinning(particles);
        for (auto* chunk = particles.system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            for (unsigned int slot = 3; slot < chunk->entries().size(); slot += slot % 5 + 2) {
                chunk->release(slot);
            }
        }
        expectEvenThinning(particles);
        particles.system.compact();
        expectEvenThinning(particles);
    }
}

TEST(Particles_RL_GL_v2_calls_test, recordsLargerThanCacheHaveSameContents) {
    Particles particles(25 * CHUNK + 77);
    particles.system.firstChunk()->release(5);
    Rig rig;
    Arguments a;
    a.channel = particles.velocity;
    for (float const percent : {100.0F, 87.3F}) {
        a.percent = percent;
        rig.renderer.vbo(particles.system, a);
        EXPECT_TRUE(rig.vboBits() == recordBits(particles.system, a, vboColor)) << percent;
        rig.renderer.vboEffect(particles.system, a);
        EXPECT_TRUE(rig.vboBits() == recordBits(particles.system, a, effectColor)) << percent;
        rig.renderer.memory(particles.system, a);
        EXPECT_TRUE(rig.hostBits(targetOf(particles.system, percent)) ==
                    recordBits(particles.system, a, memoryColor))
            << percent;
    }
}

TEST(Particles_RL_GL_v2_calls_test, halfOfParticlesIsEverySecondOne) {
    Rig rig;
    Particles const particles(10);
    Arguments a;
    a.percent = 50;
    rig.renderer.vbo(particles.system, a);
    std::vector<float> const records = as<float>(rig.driver.bufferContents(rig.renderer.vboId));
    std::vector<float> heights;
    for (std::size_t i = 1; i < records.size(); i += 6) {
        heights.push_back(-records[i]);
    }
    EXPECT_THAT(heights, ElementsAre(0, 2, 4, 6, 8));
}

TEST(Particles_RL_GL_v2_calls_test, percentagesBeyondRangeReadNoMissingParticles) {
    Particles const particles(CHUNK + 10);
    for (float const percent : {-50.0F, -INF, NOT_A_NUMBER, 101.0F, 1e30F, INF}) {
        Rig rig;
        Arguments a;
        a.percent = percent;
        std::size_t const most = percent > 100 ? CHUNK + 10 : 0;
        gl_spy::Recording const recording;
        rig.renderer.vbo(particles.system, a);
        rig.renderer.vboEffect(particles.system, a);
        rig.renderer.memory(particles.system, a);
        ASSERT_EQ(recording.count("glDrawArrays"), 3U) << percent;
        for (gl_spy::Call const& call : recording.named("glDrawArrays")) {
            EXPECT_EQ(call.numbers.at(1), most) << percent;
        }

        rig.renderer.chunks(particles.system, a);
        rig.renderer.render(particles.system, false, 0, percent);
        ASSERT_EQ(recording.count("glDrawElements"), 4U) << percent;
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(recording.named("glDrawElements")[i].numbers.at(0),
                      percent > 100 ? (i % 2 == 0 ? CHUNK : 10) : 0);
        }
        for (std::size_t i = 0; i < 10; ++i) {
            EXPECT_LT(rig.renderer.shuffledIndices[i], 10);
        }
    }
}

// == Main memory ==

TEST(Particles_RL_GL_v2_calls_test, mainMemoryIsFilledOnceAndDrawn) {
    Rig rig;
    Particles particles(100);
    Arguments a;
    Texts const drawn = joined({{SIZED}, drawnBatch(100)});
    EXPECT_EQ(callsOf([&] { rig.renderer.memory(particles.system, a); }), drawn);
    EXPECT_EQ(rig.renderer.lastPath, 4U);
    EXPECT_EQ(rig.renderer.hostCapacity, 100U);

    std::vector<std::uint32_t> const before = rig.hostBits(100);
    particles.system.firstChunk()->channelData(0)->asVectors()[0].x = 77;
    a.rebuild = false;
    EXPECT_EQ(callsOf([&] { rig.renderer.memory(particles.system, a); }), drawn);
    EXPECT_EQ(rig.hostBits(100), before);
    rig.renderer.lastPath = 3;
    rig.renderer.memory(particles.system, a);
    EXPECT_EQ(rig.hostBits(100), recordBits(particles.system, a, memoryColor));

    particles.system.addParticles(1);  // More than there is room for: filled without being asked.
    EXPECT_THAT(callsOf([&] { rig.renderer.memory(particles.system, a); }), Contains(arrays(101)));
    EXPECT_EQ(rig.renderer.hostCapacity, 101U);
    EXPECT_EQ(rig.hostBits(101), recordBits(particles.system, a, memoryColor));
    float* const array = rig.renderer.hostBuffer;
    a.percent = 10;
    array[0] = 1234;
    rig.renderer.memory(particles.system, a);
    EXPECT_EQ(array[0], 1234) << "fewer particles are the first ones of those there";
    a.rebuild = true;
    rig.renderer.memory(particles.system, a);
    EXPECT_EQ(rig.renderer.hostBuffer, array);
    EXPECT_EQ(rig.renderer.hostCapacity, 101U);
}

TEST(Particles_RL_GL_v2_calls_test, mainMemoryIsDrawnInBatchesAndRemainderEvenIfEmpty) {
    for (unsigned int const rest : {0U, 5U}) {
        Rig rig;
        ParticleSystem_v2 system;
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        system.addParticles(2 * BATCH + rest);
        gl_spy::Recording const recording;
        rig.renderer.memory(system, Arguments{});
        EXPECT_EQ(recording.texts(),
                  joined({{SIZED}, drawnBatch(BATCH), drawnBatch(BATCH), drawnBatch(rest)}));
        auto const start = reinterpret_cast<std::uintptr_t>(rig.renderer.hostBuffer);
        for (std::size_t batch = 0; batch < 3; ++batch) {
            std::uintptr_t const at = start + batch * BATCH * 24;
            EXPECT_EQ(recording.named("glVertexPointer").at(batch).addresses.at(0), at);
            EXPECT_EQ(recording.named("glColorPointer").at(batch).addresses.at(0), at + 12);
        }
    }
}

// == Chunks ==

std::vector<std::uintptr_t> addressesOf(gl_spy::Recording const& recording, char const* name) {
    std::vector<std::uintptr_t> addresses;
    for (gl_spy::Call const& call : recording.named(name)) {
        addresses.push_back(call.addresses.at(0));
    }
    return addresses;
}

std::vector<std::uintptr_t> arraysOf(ParticleSystem_v2 const& system, unsigned int channel) {
    std::vector<std::uintptr_t> addresses;
    for (auto const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        ParticleChannelChunkData_v2* const data = chunk->channelData(channel);
        void const* const values = data->asVectors() != nullptr ? static_cast<void*>(data->asVectors())
                                                                : static_cast<void*>(data->asFloats());
        addresses.push_back(reinterpret_cast<std::uintptr_t>(values));
    }
    return addresses;
}

TEST(Particles_RL_GL_v2_calls_test, chunksHandTheirOwnArraysToEffect) {
    Particles const particles(2 * CHUNK + 5);
    for (unsigned int const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        Rig rig;
        rig.renderer.setRenderMode(Mode::type(mode));
        Arguments a;
        a.channel = particles.velocity;
        gl_spy::Recording recording;
        rig.renderer.chunks(particles.system, a);
        unsigned int const program = programOf(recording);
        recording.clear();
        rig.renderer.chunks(particles.system, a);
        EXPECT_EQ(recording.texts(),
                  joined({openedPass(mode, program), drawnChunk(12, arrays(CHUNK)),
                          drawnChunk(12, arrays(CHUNK)), drawnChunk(12, arrays(5)), LINES, CLOSED}));
        EXPECT_EQ(addressesOf(recording, "glVertexPointer"), arraysOf(particles.system, particles.position));
        EXPECT_EQ(addressesOf(recording, "glColorPointer"), arraysOf(particles.system, particles.velocity));
        EXPECT_EQ(rig.renderer.lastPath, 3U);
        EXPECT_EQ(rig.renderer.vboId, 0U);
    }
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyScalarsOfChunksHaveStrideOfOneValue) {
    Particles const particles(CHUNK + 5);
    Rig rig;
    Arguments a;
    a.channel = particles.energy;
    gl_spy::Recording const recording;
    rig.renderer.chunks(particles.system, a);
    EXPECT_EQ(ownCalls(recording),
              joined({OPENED_POINTS, drawnChunk(4, arrays(CHUNK)), drawnChunk(4, arrays(5)), ENDED}));
    EXPECT_EQ(addressesOf(recording, "glColorPointer"), arraysOf(particles.system, particles.energy));
}

TEST(Particles_RL_GL_v2_calls_test, chunksWithoutNeededColorsSendNone) {
    Particles const particles(7);
    for (unsigned int mode = 1; mode < 4; ++mode) {
        for (unsigned int magnitude = 0; magnitude < 8; ++magnitude) {
            for (unsigned int const channel : {NONE, particles.velocity, particles.energy, particles.odd}) {
                Rig rig;
                rig.renderer.setRenderMode(Mode::type(mode));
                Arguments a;
                a.magnitude = magnitude;
                a.channel = channel;
                Texts calls;
                std::string const errors =
                    errorsOf([&] { calls = ownCallsOf([&] { rig.renderer.chunks(particles.system, a); }); });
                bool const noColors = channel == NONE || channel == particles.odd ||
                                      ((magnitude == 4 || magnitude == 5) && mode != 3);
                bool const pointSize = mode == 1 || (mode == 3 && magnitude == 6);
                Texts const drawn = noColors ? drawnChunk(arrays(7))
                                             : drawnChunk(channel == particles.energy ? 4 : 12, arrays(7));
                EXPECT_EQ(calls, joined({pointSize ? OPENED_POINTS : OPENED, drawn, ENDED}))
                    << mode << " " << magnitude << " " << channel;
                EXPECT_EQ(errors, channel == particles.odd ? UNKNOWN_TYPE : "");
            }
        }
    }
}

TEST(Particles_RL_GL_v2_calls_test, unknownTypeIsReportedOncePerChunk) {
    Particles const particles(CHUNK + 1);
    Rig rig;
    Arguments a;
    a.channel = particles.odd;
    EXPECT_EQ(errorsOf([&] { rig.renderer.chunks(particles.system, a); }),
              std::string(UNKNOWN_TYPE) + UNKNOWN_TYPE);
}

TEST(Particles_RL_GL_v2_calls_test, percentageOfChunkIsBeginningOfItsShuffledIndices) {
    Particles const particles(CHUNK + 777);
    for (float const percent : {0.0F, 10.0F, 33.3F, 50.0F, 99.9F}) {
        Rig rig;
        Arguments a;
        a.percent = percent;
        a.channel = particles.velocity;
        auto const count = [&](unsigned int all) {
            return static_cast<std::size_t>(static_cast<float>(all) * percent / 100);
        };
        gl_spy::Recording const recording;
        rig.renderer.chunks(particles.system, a);
        EXPECT_EQ(ownCalls(recording), joined({OPENED_POINTS, drawnChunk(12, elements(count(CHUNK))),
                                               drawnChunk(12, elements(count(777))), ENDED}));
        auto const table = reinterpret_cast<std::uintptr_t>(rig.renderer.shuffledIndices);
        EXPECT_THAT(addressesOf(recording, "glDrawElements"), ElementsAre(table, table));
        EXPECT_EQ(rig.renderer.shuffledCount, 777U);
        EXPECT_EQ(
            std::vector<unsigned short>(rig.renderer.shuffledIndices, rig.renderer.shuffledIndices + 777),
            shuffled(777));
    }
}

TEST(Particles_RL_GL_v2_calls_test, releasedParticlesAreNotDrawn) {
    Particles particles(CHUNK + 1000);
    std::multiset<float> living;
    for (auto* chunk = particles.system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        unsigned int const slots = chunk->entries().size();
        for (unsigned int slot = 0; slot < slots; ++slot) {
            if (slot % 3 == 1) {
                chunk->release(slot);
            } else {
                living.insert(chunk->channelData(0)->asVectors()[slot].y);
            }
        }
    }
    Rig rig;
    gl_spy::Recording const recording;
    rig.renderer.render(particles.system, false, 0, 100);
    EXPECT_EQ(recording.texts(), joined({drawnChunk(arrays(CHUNK - 5461)), drawnChunk(arrays(667))}));
    EXPECT_EQ(addressesOf(recording, "glVertexPointer"), arraysOf(particles.system, 0));
    std::multiset<float> drawn;
    for (auto* chunk = particles.system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
            float const y = chunk->channelData(0)->asVectors()[slot].y;
            drawn.insert(y);
            // Compaction moves all channels of a particle together.
            EXPECT_EQ(chunk->channelData(particles.energy)->asFloats()[slot],
                      (std::fmod(-y, 9.0F) - 3) * 0.47F);
        }
    }
    EXPECT_EQ(drawn, living);
    EXPECT_TRUE(particles.system.firstChunk()->isCompacted());
}

TEST(Particles_RL_GL_v2_calls_test, chunksWithOneParticleOrNoneAreDrawnAsSuch) {
    Particles particles(CHUNK + 4);
    for (auto* chunk = particles.system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        for (unsigned int slot = chunk == particles.system.firstChunk() ? 0 : 1; slot < CHUNK; ++slot) {
            chunk->release(slot);
        }
    }
    Rig rig;
    Arguments a;
    EXPECT_EQ(ownCallsOf([&] { rig.renderer.chunks(particles.system, a); }),
              joined({OPENED_POINTS, drawnChunk(arrays(0)), drawnChunk(arrays(1)), ENDED}));
    a.percent = 60;
    EXPECT_EQ(ownCallsOf([&] { rig.renderer.chunks(particles.system, a); }),
              joined({SOLID,
                      {SIZED, "glPushAttrib(0x6000)"},
                      drawnChunk(elements(0)),
                      drawnChunk(elements(0)),
                      ENDED}));
}

TEST(Particles_RL_GL_v2_calls_test, rawPositionsAreDrawnWithoutColorsAndLeaveLastPathAlone) {
    Particles const particles(CHUNK + 9);
    struct Row {
        float percent;
        std::size_t ofFull;
        std::size_t ofLast;
    };
    for (Row const& row :
         {Row{0, 0, 0}, Row{10, 1638, 0}, Row{33.3F, 5455, 2}, Row{50, 8192, 4}, Row{99.9F, 16367, 8}}) {
        Rig rig;
        rig.renderer.lastPath = 1;
        EXPECT_EQ(callsOf([&] { rig.renderer.render(particles.system, true, 55, row.percent); }),
                  joined({drawnChunk(elements(row.ofFull)), drawnChunk(elements(row.ofLast))}));
        EXPECT_EQ(callsOf([&] { rig.renderer.render(particles.system, true, 55, 100); }),
                  joined({drawnChunk(arrays(CHUNK)), drawnChunk(arrays(9))}));
        EXPECT_EQ(rig.renderer.lastPath, 1U);
    }
}

TEST(Particles_RL_GL_v2_calls_test, chunkIsDrawnWithGivenArraysAndStride) {
    Rig rig;
    std::vector<Vector3<float>> points(10);
    std::vector<float> values(40);
    gl_spy::Recording recording;
    rig.renderer.renderChunkRaw(9, points.data(), values.data(), 10, 100, false, 16, true);
    EXPECT_EQ(recording.texts(), drawnChunk(16, arrays(10)));
    EXPECT_EQ(recording.named("glColorPointer").at(0).addresses.at(0),
              reinterpret_cast<std::uintptr_t>(values.data()));
    recording.clear();
    rig.renderer.renderChunkRaw(0, points.data(), nullptr, 10, 33.3F, true, 0, false);
    EXPECT_EQ(recording.texts(), drawnChunk(elements(3)));
}

TEST(Particles_RL_GL_v2_calls_test, withoutChannelNamedPositionChunksDrawNothing) {
    Particles const particles(10, "Position");
    EXPECT_EQ(particles.system.channelId("position"), NONE);
    Rig rig;
    Arguments a;
    a.channel = particles.velocity;
    EXPECT_EQ(ownCallsOf([&] { rig.renderer.chunks(particles.system, a); }), joined({OPENED_POINTS, ENDED}));
    EXPECT_THAT(callsOf([&] { rig.renderer.render(particles.system, false, 0, 100); }), IsEmpty());
    EXPECT_EQ(rig.renderer.lastPath, 3U);
}

TEST(Particles_RL_GL_v2_calls_test, deliberatelyBuffersReadChannel0AndChunksReadPositionByName) {
    Particles particles(10, "former position");
    unsigned int const position = particles.system.addChannel("position", ParticleChannel_v2::VECTOR);
    Rig rig;
    Arguments const a;
    rig.renderer.vbo(particles.system, a);
    EXPECT_EQ(rig.vboBits(), recordBits(particles.system, a, vboColor));
    gl_spy::Recording const recording;
    rig.renderer.render(particles.system, false, 0, 100);
    EXPECT_EQ(addressesOf(recording, "glVertexPointer"), arraysOf(particles.system, position));
}

TEST(Particles_RL_GL_v2_calls_test, systemsWithoutParticlesOrChannelsRestoreState) {
    ParticleSystem_v2 const empty;
    ParticleSystem_v2 bare;
    bare.addParticles(30);
    for (ParticleSystem_v2 const* system : std::initializer_list<ParticleSystem_v2 const*>{&empty, &bare}) {
        Rig rig;
        Arguments a;
        for (unsigned int const channel : {NONE, 0U}) {
            a.channel = channel;
            testing::internal::CaptureStderr();
            for (int ways = 0; ways < 4; ++ways) {
                a.useVbo = (ways & 1) != 0;
                a.useShaders = (ways & 2) != 0;
                rig.renderer.dispatch(*system, a);
                EXPECT_EQ(rig.layer.currentFillingFront(), FILLING_LINES);
            }
            rig.renderer.render(*system, false, 0, 50);
            testing::internal::GetCapturedStderr();
        }
    }
}

TEST(Particles_RL_GL_v2_calls_test, particlesWithoutChannelsAreDrawnAtOrigin) {
    ParticleSystem_v2 bare;
    bare.addParticles(5);
    Rig rig;
    rig.renderer.vbo(bare, Arguments{});
    std::vector<float> const records = as<float>(rig.driver.bufferContents(rig.renderer.vboId));
    ASSERT_EQ(records.size(), 30U);
    EXPECT_THAT(std::vector<float>(records.end() - 6, records.end()), ElementsAre(0, 0, 0, 0.9F, 0.1F, 0.3F));
}

TEST(Particles_RL_GL_v2_calls_test, effectThatDoesNotCompileRestoresState) {
    Rig rig;
    Particles const particles(10);
    rig.driver.shaderStatus(false, "no").programStatus(false, "no");
    for (unsigned int const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        rig.renderer.setRenderMode(Mode::type(mode));
        testing::internal::CaptureStdout();
        gl_spy::Recording const recording;
        rig.renderer.vboEffect(particles.system, Arguments{});
        rig.renderer.chunks(particles.system, Arguments{});
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(recording.count("glPushAttrib"), recording.count("glPopAttrib"));
        EXPECT_EQ(recording.count("glEnableClientState"), recording.count("glDisableClientState"));
        EXPECT_EQ(recording.texts().back(), "glPopAttrib()");
        EXPECT_EQ(rig.layer.currentFillingFront(), FILLING_LINES);
        EXPECT_EQ(rig.layer.currentFillingBack(), FILLING_LINES);
    }
}

}  // namespace

}  // namespace vellum
