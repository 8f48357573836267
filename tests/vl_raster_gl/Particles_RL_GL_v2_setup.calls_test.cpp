#include "particle_calls.h"

#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"
#include "glsl_shader/effect_calls.h"
#include "member_slots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <vector>

// The particle renderer apart from drawing: lifecycle, the rule for video memory, the index table, and the
// choice and parameters of the effects.

namespace vellum {

namespace {

using namespace particle_calls;
using testing::ElementsAre;
using testing::IsEmpty;

// == Set-up ==

TEST(Particles_RL_GL_v2_setup_calls_test, initGivesEveryFieldItsFirstValueAndAsksForBuffersOnce) {
    Rig rig;
    Probe fresh;
    EXPECT_THAT(callsOf([&] { fresh.init(); }), IsEmpty());  // The layer has read the extensions before.
    EXPECT_EQ(fresh.vboId, 0U);
    EXPECT_TRUE(fresh.vboSupported);
    EXPECT_EQ(fresh.hostBuffer, nullptr);
    EXPECT_EQ(fresh.vboSizeKB, 0U);
    EXPECT_EQ(fresh.vboParticleCount, 0U);
    EXPECT_EQ(fresh.hostCapacity, 0U);
    EXPECT_EQ(fresh.vboCapacity, 0U);
    EXPECT_EQ(fresh.reservedMode, 2U);
    EXPECT_EQ(fresh.programId, 0U);
    EXPECT_THAT(fresh.shaderIds, ElementsAre(0, 0, 0));
    EXPECT_EQ(fresh.renderMode, 1U);
    EXPECT_EQ(fresh.lastPath, 0U);
    EXPECT_EQ(fresh.pointShader, nullptr);
    EXPECT_EQ(fresh.sphereShader, nullptr);
    EXPECT_EQ(fresh.arrowShader, nullptr);
    ASSERT_NE(fresh.shuffledIndices, nullptr);
    fresh.shuffledIndices[CHUNK - 1] = 7;  // 16384 entries
    EXPECT_EQ(fresh.shuffledCount, 0U);
}

TEST(Particles_RL_GL_v2_setup_calls_test, buffersAreSupportedUnderEitherNameInThatOrder) {
    struct Asked : Core_RL_GL {
        bool isExtensionSupported(char const* name) override {
            names.emplace_back(name);
            return name == supported;
        }
        std::string supported;
        Texts names;
    };
    Texts const both{"GL_ARB_vertex_buffer_object", "ARB_vertex_buffer_object"};
    for (std::size_t const listed : {0U, 1U, 2U}) {
        gl_spy::Script const driver = gl_spy::drivers::gl21();
        Asked layer;
        layer.supported = listed < 2 ? both[listed] : "";
        Probe renderer;
        renderer.init();
        EXPECT_EQ(renderer.vboSupported, listed < 2);
        EXPECT_EQ(layer.names, listed == 0 ? Texts{both[0]} : both);
    }
}

TEST(Particles_RL_GL_v2_setup_calls_test, clearHasSlotTwo) {
    EXPECT_EQ((member_slots::slotOf<Particles_RL_GL_v2, void()>(&Particles_RL_GL_v2::clear)), 2U);
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyInheritedRenderDoesNothing) {
    Rig rig;
    Particles const particles(5);
    Arguments const a;
    Particles_RL_v2& base = rig.renderer;
    EXPECT_THAT(callsOf([&] {
                    base.render(particles.system, false, true, a.scale, a.minMagnitude, a.maxMagnitude,
                                a.minColor, a.maxColor);
                }),
                IsEmpty());
}

TEST(Particles_RL_GL_v2_setup_calls_test, settingModeAndReloadingMakeNoCalls) {
    Rig rig;
    Color4<float> c{1, 1, 1, 1};
    EXPECT_THAT(callsOf([&] {
                    rig.renderer.setRenderMode(Mode::ARROWS);
                    rig.renderer.reloadShadersIfNeeded(c, c, 0, 1);
                }),
                IsEmpty());
    EXPECT_EQ(rig.renderer.renderMode, 3U);
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyClearDropsBuffersAndKeepsSizesAndEffects) {
    Rig rig;
    Particles const particles(100);
    Arguments a;
    rig.renderer.memory(particles.system, a);
    rig.renderer.vboEffect(particles.system, a);
    auto* const effect = rig.renderer.pointShader;
    unsigned int const vbo = rig.renderer.vboId;
    EXPECT_THAT(callsOf([&] { rig.renderer.clear(); }), ElementsAre(deleted(vbo)));
    EXPECT_EQ(rig.renderer.hostBuffer, nullptr);
    EXPECT_EQ(rig.renderer.vboId, 0U);
    EXPECT_EQ(rig.renderer.hostCapacity, 0U);
    EXPECT_EQ(rig.renderer.vboCapacity, 100U);
    EXPECT_EQ(rig.renderer.vboSizeKB, 2U);
    EXPECT_EQ(rig.renderer.pointShader, effect);
    EXPECT_THAT(callsOf([&] { rig.renderer.clear(); }), IsEmpty());
}

TEST(Particles_RL_GL_v2_setup_calls_test, resetBuffersShrinksAndMapsBufferThenDropsProgram) {
    Rig rig;
    Particles const particles(100);
    Arguments const a;
    rig.renderer.memory(particles.system, a);
    rig.renderer.vbo(particles.system, a);
    unsigned int const vbo = rig.renderer.vboId;
    rig.renderer.programId = 70;
    rig.renderer.shaderIds[0] = 71;
    rig.renderer.shaderIds[2] = 73;
    EXPECT_THAT(callsOf([&] { rig.renderer.resetBuffers(); }),
                ElementsAre(binding(vbo), store(1), "glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)",
                            deleted(vbo), "glDetachShader(70, 71)", "glDetachShader(70, 73)",
                            "glDeleteShader(71)", "glDeleteShader(73)", "glDeleteProgram(70)"));
    EXPECT_EQ(rig.renderer.hostBuffer, nullptr);
    EXPECT_EQ(rig.renderer.vboId, 0U);
    EXPECT_EQ(rig.renderer.programId, 0U);
    EXPECT_THAT(rig.renderer.shaderIds, ElementsAre(0, 0, 0));
    EXPECT_EQ(rig.renderer.hostCapacity, 100U);  // Deliberate (kept-buffer-sizes): the counters stay.
    EXPECT_EQ(rig.renderer.vboCapacity, 100U);
    EXPECT_THAT(callsOf([&] { rig.renderer.resetBuffers(); }), IsEmpty());

    // The remaining capacity does not mean that there is an array.
    rig.renderer.memory(particles.system, a);
    EXPECT_EQ(rig.hostBits(100), recordBits(particles.system, a, memoryColor));
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyDestructorResetsBuffersAndLeavesEffects) {
    Rig rig;
    Particles const particles(10);
    PointRendering_shader* effect = nullptr;
    Texts calls;
    {
        Probe renderer;
        renderer.init();
        renderer.vboEffect(particles.system, Arguments{});
        renderer.ownedBlock = ::operator new(8);
        effect = renderer.pointShader;
        gl_spy::Recording const recording;
        renderer.~Probe();
        calls = recording.texts();
        new (&renderer) Probe;  // for the end of its scope
    }
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], store(1));
    EXPECT_EQ(calls[2], "glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)");
    delete effect;  // It is still whole.
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyGetShaderGivesRoomForFileAndZero) {
    Rig rig;
    std::filesystem::path const path = std::filesystem::path(testing::TempDir()) / "particles_length.glsl";
    std::ofstream(path, std::ios::binary) << "void main(){}";
    Array<char> const text = rig.renderer.getShader(path.string().c_str());
    EXPECT_EQ(text.size(), 14U);
    EXPECT_EQ(text.capacity(), 14U);
    EXPECT_EQ(text[13], 0);
    std::filesystem::remove(path);
    EXPECT_EQ(rig.renderer.getShader(path.string().c_str()).size(), 0U);
    EXPECT_EQ(rig.renderer.getShader("/").size(), 0U);
    EXPECT_EQ(rig.renderer.getShader(nullptr).size(), 0U);
}

// == The memory rule ==

TEST(Particles_RL_GL_v2_setup_calls_test, memoryRuleComparesMegabytesLess25WithPercentage) {
    Particles const particles(50000);  // 1.14 MB
    struct Row {
        int freeKilobytes;
        unsigned int ownKilobytes;
        float percent;
        bool fits;
    };
    for (Row const& row :
         {Row{26 * 1024, 0, 100, false}, Row{26 * 1024 + 1023, 0, 100, false}, Row{27 * 1024, 0, 100, true},
          Row{26 * 1024, 0, 50, true}, Row{25 * 1024, 2 * 1024, 100, true},
          Row{25 * 1024, 2 * 1024 - 1, 100, false}, Row{25 * 1024, 0, 0, false}, Row{25 * 1024, 0, -1, true},
          Row{PLENTY, 0, NOT_A_NUMBER, false}}) {
        Rig rig(row.freeKilobytes);
        rig.renderer.vboSizeKB = row.ownKilobytes;
        gl_spy::Recording const recording;
        EXPECT_EQ(rig.renderer.checkEnoughMemoryinGPU(particles.system, row.percent), row.fits)
            << row.freeKilobytes << " " << row.ownKilobytes << " " << row.percent;
        EXPECT_THAT(recording.texts(), ElementsAre(FREE));
    }
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyBelow25MegabytesMemoryRuleWrapsAndAnswersTrue) {
    Particles const particles(50000);
    EXPECT_TRUE(Rig(0).renderer.checkEnoughMemoryinGPU(particles.system, 100));
    EXPECT_TRUE(Rig(25 * 1024 - 1).renderer.checkEnoughMemoryinGPU(particles.system, 100));
}

// == The index table ==

TEST(Particles_RL_GL_v2_setup_calls_test, indexTableIsShuffleSeededWithCount) {
    Rig rig;
    for (unsigned int const count : {2U, 3U, 10U, 1000U, CHUNK, 1U}) {
        rig.renderer.initIndices(int(count));
        EXPECT_EQ(rig.renderer.shuffledCount, count);
        EXPECT_EQ(
            std::vector<unsigned short>(rig.renderer.shuffledIndices, rig.renderer.shuffledIndices + count),
            shuffled(count));
    }
}

TEST(Particles_RL_GL_v2_setup_calls_test, sameCountTwiceLeavesIndexTableAsItIs) {
    Rig rig;
    rig.renderer.initIndices(10);
    rig.renderer.shuffledIndices[4] = 99;
    rig.renderer.initIndices(10);
    EXPECT_EQ(rig.renderer.shuffledIndices[4], 99);
    rig.renderer.initIndices(11);
    rig.renderer.initIndices(10);
    EXPECT_EQ(rig.renderer.shuffledIndices[4], shuffled(10)[4]);
}

TEST(Particles_RL_GL_v2_setup_calls_test, countsOfNoneAndOneDoNotRunBelowZero) {
    Rig rig;
    rig.renderer.initIndices(5);
    rig.renderer.initIndices(0);
    EXPECT_EQ(rig.renderer.shuffledCount, 0U);
    rig.renderer.initIndices(1);
    EXPECT_EQ(rig.renderer.shuffledIndices[0], 0);
    for (int const count : {-1, int(CHUNK) + 1, std::numeric_limits<int>::max()}) {
        rig.renderer.initIndices(5);
        rig.renderer.initIndices(count);
        EXPECT_EQ(rig.renderer.shuffledCount, 5U) << count << " is ignored";
    }
}

// == The effects ==

/// The uniforms that depend on the arguments; those of the lights are left out.
Texts parametersOf(unsigned int mode) {
    Texts const magnitudes{"maxMagnitude glUniform1fv {1.75}", "minMagnitude glUniform1fv {0.25}",
                           "magnitudeScale glUniform1fv {1.5}"};
    Texts const size{"size glUniform1fv {4}"};
    Texts const ends{"minColor glUniform3fv {0.9, 0.1, 0.3}", "maxColor glUniform3fv {0.2, 0.8, 0.7}",
                     "maxClampColor glUniform3fv {1, 0.5, 0.25}"};
    return mode == Mode::ARROWS ? joined({magnitudes, ends, size}) : joined({magnitudes, size, ends});
}

TEST(Particles_RL_GL_v2_setup_calls_test, eachModeMakesAndConfiguresItsOwnEffect) {
    for (unsigned int const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        Rig rig;
        rig.renderer.setRenderMode(Mode::type(mode));
        gl_spy::Recording const recording;
        rig.renderer.configure(Arguments{});
        EXPECT_EQ(ownCalls(recording),
                  joined({SOLID, mode == 1 ? Texts{SIZED} : Texts{}, {"glPushAttrib(0x6000)"}}));
        Texts sent = uniformsSent(recording);
        ASSERT_GE(sent.size(), 9U);
        sent.erase(sent.begin(), sent.end() - 7);
        EXPECT_EQ(sent, parametersOf(mode));
        EXPECT_EQ(rig.renderer.pointShader != nullptr, mode == 1);
        EXPECT_EQ(rig.renderer.sphereShader != nullptr, mode == 2);
        EXPECT_EQ(rig.renderer.arrowShader != nullptr, mode == 3);
        EXPECT_EQ(recording.count("glLinkProgram"), 1U);
    }
}

TEST(Particles_RL_GL_v2_setup_calls_test, newEffectIsCreatedAndEnabledBeforePassOpens) {
    Rig rig;
    gl_spy::Recording const recording;
    rig.renderer.configure(Arguments{});
    Texts names;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glLinkProgram" || call.name == "glUseProgram" || call.name == "glPushAttrib") {
            names.push_back(call.name);
        }
    }
    // create(), init(), then the dirty effect's own pass.
    EXPECT_EQ(names, (Texts{"glLinkProgram", "glUseProgram", "glUseProgram", "glUseProgram", "glPushAttrib",
                            "glUseProgram"}));
}

TEST(Particles_RL_GL_v2_setup_calls_test, magnitudeIsProcessTypeAndNewMagnitudeReplacesEffect) {
    for (unsigned int const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        Rig rig;
        rig.renderer.setRenderMode(Mode::type(mode));
        auto const effect = [&]() -> Impostor_shader* {
            return mode == 1   ? static_cast<Impostor_shader*>(rig.renderer.pointShader)
                   : mode == 2 ? static_cast<Impostor_shader*>(rig.renderer.sphereShader)
                               : static_cast<Impostor_shader*>(rig.renderer.arrowShader);
        };
        Arguments a;
        Particles const particles(3);
        std::size_t objects = 0;
        for (unsigned int const magnitude : {0U, 1U, 2U, 3U, 4U, 5U, 7U}) {
            a.magnitude = magnitude;
            gl_spy::Recording recording;
            rig.renderer.chunks(particles.system, a);
            EXPECT_EQ(static_cast<unsigned int>(effect()->processType()), magnitude);
            EXPECT_EQ(recording.count("glLinkProgram"), 1U);
            EXPECT_EQ(recording.count("glDeleteProgram"), magnitude == 0 ? 0U : 1U);
            objects = magnitude == 0 ? rig.driver.liveObjects() : objects;
            EXPECT_EQ(rig.driver.liveObjects(), objects);
            recording.clear();
            rig.renderer.chunks(particles.system, a);
            EXPECT_EQ(recording.count("glLinkProgram"), 0U);
        }
    }
}

TEST(Particles_RL_GL_v2_setup_calls_test, arrowsWithMagnitude6ConfigurePointEffect) {
    Rig rig;
    rig.renderer.setRenderMode(Mode::ARROWS);
    Arguments a;
    a.magnitude = 6;
    EXPECT_EQ(ownCallsOf([&] { rig.renderer.configure(a); }), OPENED_POINTS);
    ASSERT_NE(rig.renderer.pointShader, nullptr);
    EXPECT_EQ(static_cast<unsigned int>(rig.renderer.pointShader->processType()), 6U);
    EXPECT_EQ(rig.renderer.arrowShader, nullptr);
    EXPECT_EQ(rig.renderer.renderMode, 3U);
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyArrowsWithMagnitude6CloseArrowEffectWhereThereIsOne) {
    Particles const particles(3);
    for (bool const hasArrows : {false, true}) {
        Rig rig;
        rig.renderer.setRenderMode(Mode::ARROWS);
        Arguments a;
        if (hasArrows) {
            rig.renderer.chunks(particles.system, a);
        }
        a.magnitude = 6;
        for (bool const useChunks : {true, false, true}) {
            gl_spy::Recording const recording;
            if (useChunks) {
                rig.renderer.chunks(particles.system, a);
            } else {
                rig.renderer.vboEffect(particles.system, a);
            }
            EXPECT_EQ(recording.count("glPushAttrib"), 1U);
            EXPECT_EQ(recording.count("glPopAttrib"), 1U);
            EXPECT_EQ(recording.count("glUseProgramObjectARB"), 1U);
            EXPECT_EQ(recording.texts().back(), "glPopAttrib()");
        }
        // A point effect that was never closed stays dirty and sends everything again.
        gl_spy::Recording const recording;
        rig.renderer.chunks(particles.system, a);
        EXPECT_EQ(uniformsSent(recording).empty(), !hasArrows);
    }
}

TEST(Particles_RL_GL_v2_setup_calls_test, deliberatelyModeWithoutEffectLeavesFillingPushed) {
    Particles const particles(3);
    for (unsigned int const mode : {0U, 4U, NONE}) {
        Rig rig;
        rig.renderer.setRenderMode(Mode::type(mode));
        Arguments const a;
        EXPECT_EQ(callsOf([&] { rig.renderer.configure(a); }), SOLID);
        EXPECT_EQ(callsOf([&] { rig.renderer.vboEffect(particles.system, a); }),
                  joined({SOLID, {GENERATED}, grown(1, 3), uploaded(1, 3), drawnFromVbo(1, 3, {})}));
        EXPECT_EQ(callsOf([&] { rig.renderer.chunks(particles.system, a); }),
                  joined({SOLID, drawnChunk(arrays(3))}));
        EXPECT_EQ(rig.layer.currentFillingFront(), FILLING_SOLID);
        EXPECT_EQ(rig.layer.currentFillingBack(), FILLING_SOLID);
    }
}

}  // namespace

}  // namespace vellum
