#include "toolkit/ParticleRenderer.h"

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/build_facts.h"
#include "tests/support/recorded_calls.h"
#include "tests/toolkit/particle_values.h"
#include "toolkit/Layer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

constexpr unsigned int CURRENT_COLOR = 0x0B00;
constexpr unsigned int LINE_WIDTH = 0x0B21;

/// A driver, a layer and some particles.
class ParticleRenderer_calls_test : public testing::Test {
protected:
    ParticleRenderer_calls_test() {
        driver.string(VERSION, "2.1.0")
            .string(EXTENSIONS, "GL_ARB_vertex_buffer_object GL_EXT_geometry_shader4");
        layer = std::make_unique<Layer>();
        layer->assumeFreeGpuMemory(1024);
        addChannels(system);
        system.addParticles(10);
        for (unsigned int k = 0; k < 10; ++k) {
            auto const value = static_cast<float>(k) / 10;
            system.firstChunk()->channelData(0)->asVectors()[k] = {value, -value, 1};
            system.firstChunk()->channelData(VELOCITY)->asVectors()[k] = {0, value, 0};
            system.firstChunk()->channelData(ENERGY)->asFloats()[k] = value;
            system.firstChunk()->channelData(COLOR)->asVectors()[k] = {value, 1, 0};
            system.firstChunk()->channelData(SIZE)->asFloats()[k] = k < 7 ? 2.0F : 1.0F;
        }
        look.channel = VELOCITY;
        look.colors = {{blue, red}, white};
    }
    ~ParticleRenderer_calls_test() override { renderer.release(); }

    ParticleDrawing draw() { return drawParticles(renderer, system, look, view); }

    /// How often a buffer is filled while the look is drawn.
    std::size_t fillsOf(std::function<void()> const& change) {
        change();
        gl_spy::Recording const recording;
        draw();
        return recording.count("glMapBuffer");
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    std::unique_ptr<Layer> layer;
    ParticleSystem_v2 system;
    ParticleRenderer renderer;
    ParticleLook look;
    View view{Matrix4<double>::identity(), Matrix4<double>::identity(), {10, 20, 300, 200}};
};

/// Counts how often arrows are made.
class ArrowCountingLayer : public Layer {
public:
    void createBuffers_forRenderArrow3(Array<Vector3<float>> const& positions,
                                       Array<Vector3<float>> const& directions,
                                       Array<Color4<float>> const& colors, float scale,
                                       Array<Vector3<float>>& vertices, Array<unsigned int>& triangles,
                                       Array<unsigned int>& lines, Array<unsigned int>& quads,
                                       Array<Color4<float>>& vertexColors) override {
        ++made;
        Layer::createBuffers_forRenderArrow3(positions, directions, colors, scale, vertices, triangles, lines,
                                             quads, vertexColors);
    }

    unsigned int made = 0;
};

bool isOfStrings(std::string const& text) {
    return text.rfind("glGetString", 0) == 0;
}

}  // namespace

TEST_F(ParticleRenderer_calls_test, constructionMakesNoCall) {
    gl_spy::Recording const recording;
    ParticleRenderer other;
    other.markChanged();
    other.release();
    EXPECT_EQ(recording.texts(), Texts{});
}

TEST_F(ParticleRenderer_calls_test, llvmpipeHasNoBufferOfAllOfAMillionParticles) {
    constexpr unsigned int RENDERER = 0x1F01;
    struct Row {
        char const* driver;
        unsigned int count;
        float percent;
        ParticlePath path;
    };
    constexpr unsigned int MANY = 1U << 20U;
    for (Row const& row :
         {Row{"llvmpipe (LLVM 15.0.6, 256 bits)", MANY - 1, 100, ParticlePath::BUFFER_AND_EFFECT},
          {"llvmpipe (LLVM 15.0.6, 256 bits)", MANY, 100, ParticlePath::CHUNKS_AND_EFFECT},
          {"llvmpipe (LLVM 15.0.6, 256 bits)", MANY, 50, ParticlePath::BUFFER_AND_EFFECT},
          {"NVIDIA GeForce", MANY, 100, ParticlePath::BUFFER_AND_EFFECT}}) {
        driver.string(RENDERER, row.driver);
        ParticleSystem_v2 many;
        addChannels(many);
        many.addParticles(row.count);
        look.percent = row.percent;
        renderer.release();
        EXPECT_EQ(drawParticles(renderer, many, look, view).path, row.path)
            << row.driver << " " << row.count << " " << row.percent;
    }
}

TEST_F(ParticleRenderer_calls_test, lengthsWithTwoColorsAreDrawnByTheLibraryAsTheyAre) {
    driver.integer(CURRENT_COLOR, {1, 0, 1, 0}).integer(LINE_WIDTH, {3});
    Particles_RL_GL_v2 library;
    library.init();
    struct Row {
        ParticleMode mode;
        Particles_RL_GL_v2::RenderMode::type renderMode;
        float size;
        float effectSize;
    };
    for (Row const& row : {Row{ParticleMode::POINTS, Particles_RL_GL_v2::RenderMode::POINTS, 3, 3},
                           {ParticleMode::ARROWS, Particles_RL_GL_v2::RenderMode::ARROWS, 3, 1.5F}}) {
        look.mode = row.mode;
        look.size = row.size;
        look.percent = 70;
        library.setRenderMode(row.renderMode);
        auto const drawByLibrary = [&] {
            library.render(system, false, false, 1, 0, 1 + 1e-5F, blue, red, white, row.effectSize, VELOCITY,
                           70, true, true, Particles_RL_GL_v2::RenderMagnitude::LENGTH);
        };
        for (int warmUp = 0; warmUp < 2; ++warmUp) {
            draw();
            drawByLibrary();
        }
        auto const withoutNames = [](gl_spy::Recording const& recording) {
            Texts texts;
            for (gl_spy::Call const& call : recording.calls()) {
                // Buffers, programs and the places of uniforms have other names.
                bool const isNamed = call.name == "glBindBuffer" || call.name == "glUseProgram" ||
                                     call.name.rfind("glUniform", 0) == 0;
                bool const isOfView = call.name == "glViewport" || call.name == "glMatrixMode" ||
                                      call.name == "glLoadMatrixd" ||
                                      call.text() == "glGetIntegerv(GL_MATRIX_MODE, pointer)";
                if (!isOfStrings(call.name) && !isOfView) {
                    texts.push_back(isNamed ? call.name : call.text());
                }
            }
            return texts;
        };
        gl_spy::Recording const expected;
        drawByLibrary();
        Texts const calls = withoutNames(expected);
        gl_spy::Recording const recording;
        EXPECT_EQ(draw().path, ParticlePath::BUFFER_AND_EFFECT);
        bool const hasLines = row.mode == ParticleMode::ARROWS;
        EXPECT_EQ(withoutNames(recording),
                  joined({{"glGetFloatv(GL_CURRENT_COLOR, pointer)"},
                          hasLines ? Texts{"glGetFloatv(GL_LINE_WIDTH, pointer)"} : Texts{},
                          calls,
                          hasLines ? Texts{"glLineWidth(3)"} : Texts{},
                          {"glColor4fv({1, 0, 1, 0})"}}));
        EXPECT_EQ(recording.count("glLoadMatrixd"), hasLines ? 4U : 0U);
        EXPECT_EQ(recording.count("glViewport"), hasLines ? 2U : 0U);
        EXPECT_EQ(recording.count("glDrawArrays"), 1U);
    }
    library.releaseEffects();
}

TEST_F(ParticleRenderer_calls_test, spheresAreDrawnInASquareViewportThatIsRestored) {
    look.mode = ParticleMode::SPHERES;
    look.size = 0.5F;
    draw();
    gl_spy::Recording const recording;
    EXPECT_EQ(draw().mode, ParticleMode::SPHERES);
    Texts kept;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glViewport" || call.name == "glMatrixMode" || call.name == "glDrawArrays") {
            kept.push_back(call.text());
        }
        if (call.name == "glLoadMatrixd") {
            kept.push_back(call.name);
        }
    }
    Texts const matrices{"glMatrixMode(GL_PROJECTION)", "glLoadMatrixd", "glMatrixMode(GL_MODELVIEW)",
                         "glLoadMatrixd"};
    EXPECT_EQ(kept, joined({{"glViewport(10, 20, 300, 300)"},
                            matrices,
                            {"glDrawArrays(GL_POINTS, 0, 10)", "glViewport(10, 20, 300, 200)"},
                            matrices,
                            {"glMatrixMode(GL_MODELVIEW)"}}));
    std::vector<gl_spy::Call> const loads = recording.named("glLoadMatrixd");
    ASSERT_EQ(loads.size(), 4U);
    std::vector<double> const identity(view.projection.e, view.projection.e + 16);
    EXPECT_NE(loads[0].numbers, identity);
    EXPECT_EQ(loads[2].numbers, identity);
    EXPECT_EQ(loads[3].numbers, identity);
}

TEST_F(ParticleRenderer_calls_test, unchangedFramesUploadNothing) {
    for (unsigned int const channel : {VELOCITY, ENERGY, ParticleChannel_v2::NONE}) {
        for (std::size_t const colors : {1U, 2U, 5U}) {
            for (ParticleMode const mode :
                 {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
                for (char const* const version : {"2.1.0", "1.5.0"}) {
                    driver.string(VERSION, version);
                    look.channel = channel;
                    look.mode = mode;
                    look.colors.colors.assign(colors, red);
                    EXPECT_GT(fillsOf([&] { renderer.markChanged(); }), 0U);
                    gl_spy::Recording const recording;
                    draw();
                    EXPECT_EQ(recording.count("glMapBuffer"), 0U);
                    EXPECT_EQ(recording.count("glBufferData"), 0U);
                    EXPECT_EQ(recording.count("glCompileShader"), 0U);
                    EXPECT_EQ(recording.count("glLinkProgram"), 0U);
                    EXPECT_GT(recording.count("glDrawArrays"), 0U);
                }
            }
        }
    }
}

TEST_F(ParticleRenderer_calls_test, buffersAreFilledAgainWhenWhatIsInThemChanges) {
    EXPECT_EQ(fillsOf([] {}), 1U);
    EXPECT_EQ(fillsOf([] {}), 0U);
    EXPECT_EQ(fillsOf([this] { renderer.markChanged(); }), 1U);
    EXPECT_EQ(fillsOf([this] { look.percent = 50; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.percent = 80; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.channel = ENERGY; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.high = 2; }), 1U) << "a copy has places in the range";
    EXPECT_EQ(fillsOf([this] { look.channel = ParticleChannel_v2::NONE; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.channel = VELOCITY; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.quantity = ParticleQuantity::Y; }), 1U);
    EXPECT_EQ(fillsOf([this] { system.addParticles(1); }), 1U);
    EXPECT_EQ(fillsOf([this] { system.firstChunk()->release(3); }), 1U);
    EXPECT_EQ(fillsOf([this] { renderer.release(); }), 1U);
}

TEST_F(ParticleRenderer_calls_test, effectsTakeColorsAndSizesWithoutFillingBuffers) {
    draw();
    EXPECT_EQ(fillsOf([this] { look.size = 7; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.colors = {{green, red}, white}; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.colors.above = red; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.high = 5; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.mode = ParticleMode::SPHERES; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.mode = ParticleMode::ARROWS; }), 0U);
    look.mode = ParticleMode::POINTS;
    look.channel = ENERGY;
    draw();
    EXPECT_EQ(fillsOf([this] { look.colors = {{red, blue}, white}; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.mode = ParticleMode::SPHERES; }), 0U);
    EXPECT_EQ(fillsOf([this] { look.size = 3; }), 0U);
}

TEST_F(ParticleRenderer_calls_test, withoutEffectsColorsAreInTheBuffers) {
    driver.string(VERSION, "1.5.0");
    for (unsigned int const channel : {VELOCITY, ENERGY}) {
        look.channel = channel;
        draw();
        EXPECT_EQ(fillsOf([] {}), 0U);
        EXPECT_EQ(fillsOf([this] { look.colors.above = green; }), 1U);
        EXPECT_EQ(fillsOf([this] { look.colors.above = white; }), 1U);
        EXPECT_EQ(fillsOf([this] { look.high = 5; }), 1U);
        EXPECT_EQ(fillsOf([this] { look.high = 6; }), 1U);
        EXPECT_EQ(fillsOf([this] { look.size += 1; }), 0U);
        EXPECT_EQ(fillsOf([this] { look.mode = ParticleMode::SPHERES; }), 0U);
        look.mode = ParticleMode::POINTS;
    }
}

TEST_F(ParticleRenderer_calls_test, shadersThatComeOrGoFillTheBufferAgain) {
    draw();
    driver.string(VERSION, "1.5.0");
    EXPECT_EQ(fillsOf([] {}), 1U);
    driver.string(VERSION, "2.1.0");
    EXPECT_EQ(fillsOf([] {}), 1U);
}

TEST_F(ParticleRenderer_calls_test, mapsOfMoreColorsAreDrawnWithOneProgram) {
    look.channel = ENERGY;
    look.colors.colors = {blue, green, red, white, blue, green};
    gl_spy::Recording const recording;
    draw();
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
    EXPECT_EQ(recording.count("glDrawArrays"), 5U);
}

TEST_F(ParticleRenderer_calls_test, partsOfTheMapWithoutParticlesAreNotDrawn) {
    look.channel = ENERGY;
    look.high = 0.9;
    look.colors.colors.assign(1000, red);
    gl_spy::Recording const recording;
    draw();
    EXPECT_EQ(recording.count("glDrawArrays"), 10U);
}

TEST_F(ParticleRenderer_calls_test, pathsAreAnsweredAsTheyAreTaken) {
    struct Row {
        char const* version;
        char const* extensions;
        unsigned int megabytes;
        ParticlePath expected;
    };
    for (Row const& row : {Row{"2.1.0", "GL_ARB_vertex_buffer_object", 1024, ParticlePath::BUFFER_AND_EFFECT},
                           {"2.1.0", "GL_ARB_vertex_buffer_object", 25, ParticlePath::CHUNKS_AND_EFFECT},
                           {"2.1.0", "", 1024, ParticlePath::CHUNKS_AND_EFFECT},
                           {"1.5.0", "GL_ARB_vertex_buffer_object", 1024, ParticlePath::BUFFER},
                           {"1.5.0", "GL_ARB_vertex_buffer_object", 25, ParticlePath::MEMORY},
                           {"1.5.0", "", 1024, ParticlePath::MEMORY}}) {
        driver.string(VERSION, row.version).string(EXTENSIONS, row.extensions);
        renderer.release();
        layer.reset();
        layer = std::make_unique<Layer>();  // which asks for extensions once
        layer->assumeFreeGpuMemory(row.megabytes);
        for (unsigned int const channel : {VELOCITY, ENERGY, ParticleChannel_v2::NONE}) {
            for (std::size_t const colors : {2U, 5U}) {
                look.channel = channel;
                look.colors.colors.assign(colors, red);
                renderer.release();
                EXPECT_EQ(draw().path, row.expected) << row.version << " " << row.megabytes;
                EXPECT_EQ(draw().path, row.expected) << row.version << " " << row.megabytes;
            }
        }
    }
}

TEST_F(ParticleRenderer_calls_test, fallbacksAreAnswered) {
    driver.string(EXTENSIONS, "GL_ARB_vertex_buffer_object");
    look.mode = ParticleMode::ARROWS;
    gl_spy::Recording const recording;
    EXPECT_EQ(draw().mode, ParticleMode::POINTS);
    EXPECT_EQ(recording.named("glPointSize").at(0).text(), "glPointSize(2)");
    look.mode = ParticleMode::SPHERES;
    look.size = 0.01F;
    EXPECT_EQ(draw().mode, ParticleMode::POINTS);
    EXPECT_EQ(recording.named("glPointSize").at(1).text(), "glPointSize(1)") << "GL takes none below";
    look.size = 0.5F;
    draw();
    EXPECT_EQ(recording.named("glPointSize").at(2).text(), "glPointSize(50)");
    EXPECT_EQ(recording.count("glViewport") + recording.count("glLoadMatrixd"), 0U);
}

// == Colors and sizes of particles, solid arrows ==

TEST_F(ParticleRenderer_calls_test, fixedFunctionsDrawPointsOfOwnColors) {
    driver.integer(CURRENT_COLOR, {1, 0, 1, 0});
    look.colorChannel = COLOR;
    look.sizeChannel = SIZE;
    look.size = 3;
    draw();
    gl_spy::Recording const recording;
    EXPECT_EQ(draw().path, ParticlePath::BUFFER);
    Texts texts;
    for (gl_spy::Call const& call : recording.calls()) {
        if (!isOfStrings(call.name)) {
            texts.push_back(call.name == "glBindBuffer" ? call.name : call.text());
        }
    }
    EXPECT_EQ(texts, (Texts{"glGetFloatv(GL_CURRENT_COLOR, pointer)",
                            "glPushAttrib(0x6000)",
                            "glDisable(GL_LIGHTING)",
                            "glDisable(GL_TEXTURE_1D)",
                            "glDisable(GL_TEXTURE_2D)",
                            "glDisable(GL_TEXTURE_3D)",
                            "glEnable(GL_BLEND)",
                            "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glUseProgram(0)",
                            "glBindBuffer",
                            "glEnableClientState(GL_VERTEX_ARRAY)",
                            "glEnableClientState(GL_COLOR_ARRAY)",
                            "glVertexPointer(3, GL_FLOAT, 24, null)",
                            "glColorPointer(3, GL_FLOAT, 24, pointer)",
                            "glPointSize(6)",
                            "glDrawArrays(GL_POINTS, 0, 7)",
                            "glPointSize(3)",
                            "glDrawArrays(GL_POINTS, 7, 3)",
                            "glBindBuffer",
                            "glDisableClientState(GL_VERTEX_ARRAY)",
                            "glDisableClientState(GL_COLOR_ARRAY)",
                            "glPopAttrib()",
                            "glColor4fv({1, 0, 1, 0})"}));
}

TEST_F(ParticleRenderer_calls_test, manySizesOfPointsAreDrawnInSteps) {
    constexpr unsigned int COUNT = 5000;
    ParticleSystem_v2 many;
    addChannels(many);
    many.addParticles(COUNT);
    std::vector<float> sizes;
    for (unsigned int k = 0; k < COUNT; ++k) {
        sizes.push_back(0.001F * std::pow(2.5e6F, static_cast<float>(k) / (COUNT - 1)));
        many.firstChunk()->channelData(SIZE)->asFloats()[k] = sizes.back();
    }
    look.sizeChannel = SIZE;
    look.size = 1;
    gl_spy::Recording const recording;
    EXPECT_EQ(drawParticles(renderer, many, look, view).count, COUNT);
    std::vector<gl_spy::Call> const steps = recording.named("glPointSize");
    std::vector<gl_spy::Call> const draws = recording.named("glDrawArrays");
    ASSERT_EQ(steps.size(), draws.size());
    EXPECT_LE(steps.size(), ParticleLook::MOST_POINT_SIZES);
    // Both the sizes and the steps ascend, so the particles of a step are the next ones.
    std::size_t k = 0;
    for (std::size_t step = 0; step < steps.size(); ++step) {
        for (double left = draws[step].numbers.back(); left > 0; --left, ++k) {
            ASSERT_LT(k, sizes.size());
            EXPECT_NEAR(steps[step].numbers.at(0) / static_cast<double>(sizes[k]), 1, 0.03);
        }
    }
    EXPECT_EQ(k, sizes.size());
}

TEST_F(ParticleRenderer_calls_test, asManySizesAsThereMayBeAreExact) {
    constexpr unsigned int COUNT = 3 * ParticleLook::MOST_POINT_SIZES;
    ParticleSystem_v2 many;
    addChannels(many);
    many.addParticles(COUNT);
    for (unsigned int k = 0; k < COUNT; ++k) {
        many.firstChunk()->channelData(SIZE)->asFloats()[k] =
            static_cast<float>(1 + k % ParticleLook::MOST_POINT_SIZES);
    }
    look.sizeChannel = SIZE;
    look.size = 1;
    gl_spy::Recording const recording;
    drawParticles(renderer, many, look, view);
    std::vector<gl_spy::Call> const steps = recording.named("glPointSize");
    ASSERT_EQ(steps.size(), std::size_t{ParticleLook::MOST_POINT_SIZES});
    for (std::size_t k = 0; k < steps.size(); ++k) {
        EXPECT_EQ(steps[k].numbers.at(0), static_cast<double>(k + 1));
    }
}

TEST_F(ParticleRenderer_calls_test, ownColorsAreDrawnInOneCallOnEachPath) {
    struct Row {
        ParticleMode mode;
        char const* version;
        unsigned int megabytes;
        ParticlePath expected;
    };
    look.colorChannel = COLOR;
    look.channel = VELOCITY;
    for (Row const& row : {Row{ParticleMode::POINTS, "2.1.0", 1024, ParticlePath::BUFFER},
                           {ParticleMode::POINTS, "2.1.0", 25, ParticlePath::MEMORY},
                           {ParticleMode::POINTS, "1.5.0", 1024, ParticlePath::BUFFER},
                           {ParticleMode::POINTS, "1.5.0", 25, ParticlePath::MEMORY},
                           {ParticleMode::SPHERES, "2.1.0", 1024, ParticlePath::BUFFER_AND_EFFECT},
                           {ParticleMode::SPHERES, "2.1.0", 25, ParticlePath::CHUNKS_AND_EFFECT},
                           {ParticleMode::ARROWS, "2.1.0", 1024, ParticlePath::BUFFER_AND_EFFECT},
                           {ParticleMode::ARROWS, "2.1.0", 25, ParticlePath::CHUNKS_AND_EFFECT}}) {
        driver.string(VERSION, row.version);
        layer->assumeFreeGpuMemory(row.megabytes);
        look.mode = row.mode;
        renderer.release();
        gl_spy::Recording const recording;
        EXPECT_EQ(draw().path, row.expected);
        EXPECT_EQ(recording.count("glDrawArrays"), 1U);
        EXPECT_EQ(recording.count("glMapBuffer"), row.megabytes > 25 ? 1U : 0U);
    }
}

TEST_F(ParticleRenderer_calls_test, refusedBuffersOfOwnColorsLeaveMainMemory) {
    std::size_t const before = driver.liveObjects();
    look.colorChannel = COLOR;
    driver.nullMap();
    gl_spy::Recording const recording;
    EXPECT_EQ(draw().path, ParticlePath::MEMORY);
    EXPECT_EQ(draw().path, ParticlePath::MEMORY);
    EXPECT_EQ(recording.count("glGenBuffers"), 1U);
    EXPECT_EQ(driver.liveObjects(), before);
}

TEST_F(ParticleRenderer_calls_test, ownColorsAreReadAgainWhenTheyChange) {
    look.colorChannel = COLOR;
    look.sizeChannel = SIZE;
    EXPECT_EQ(fillsOf([] {}), 1U);
    EXPECT_EQ(fillsOf([] {}), 0U);
    EXPECT_EQ(fillsOf([this] { look.size = 7; }), 0U);
    EXPECT_EQ(fillsOf([this] { renderer.markChanged(); }), 1U);
    EXPECT_EQ(fillsOf([this] { look.percent = 50; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.sizeChannel = ParticleChannel_v2::NONE; }), 1U);
    EXPECT_EQ(fillsOf([this] { system.addParticles(1); }), 1U);
    EXPECT_EQ(fillsOf([this] { look.mode = ParticleMode::SPHERES; }), 1U);
    EXPECT_EQ(fillsOf([this] { look.size = 0.5F; }), 0U);
}

TEST_F(ParticleRenderer_calls_test, solidArrowsAreMadeAgainOnlyWhenTheyChange) {
    layer.reset();
    auto owned = std::make_unique<ArrowCountingLayer>();
    unsigned int const& made = owned->made;
    layer = std::move(owned);
    look.mode = ParticleMode::SOLID_ARROWS;
    auto const isMade = [&](std::function<void()> const& change) {
        unsigned int const before = made;
        change();
        gl_spy::Recording const recording;
        draw();
        EXPECT_EQ(recording.count("glDrawElements"), 3U);
        return made != before;
    };
    EXPECT_TRUE(isMade([] {}));
    EXPECT_FALSE(isMade([] {}));
    EXPECT_TRUE(isMade([this] { renderer.markChanged(); }));
    EXPECT_TRUE(isMade([this] { look.size = 3; }));
    EXPECT_TRUE(isMade([this] { look.colors = {{green, red}, white}; }));
    EXPECT_TRUE(isMade([this] { look.colorChannel = COLOR; }));
    EXPECT_TRUE(isMade([this] { system.addParticles(1); }));
    EXPECT_FALSE(isMade([] {}));
}

TEST_F(ParticleRenderer_calls_test, releaseDeletesEverythingThatDrawingsMade) {
    std::size_t const before = driver.liveObjects();
    for (unsigned int const channel : {VELOCITY, ENERGY}) {
        for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
            look.channel = channel;
            look.mode = mode;
            look.colors.colors.assign(channel == ENERGY ? 7U : 2U, red);
            draw();
            look.colorChannel = COLOR;
            draw();
            look.colorChannel = ParticleChannel_v2::NONE;
        }
    }
    EXPECT_GT(driver.liveObjects(), before + 5);
    renderer.release();
    EXPECT_EQ(driver.liveObjects(), before);
}

TEST_F(ParticleRenderer_calls_test, withoutLayerNothingIsDrawn) {
    draw();
    layer.reset();
    VL_Raster = nullptr;
    if (areLifetimesChecked()) {
        EXPECT_DEATH(draw(), "drawParticles: there is no render layer");
        return;
    }
    look.mode = ParticleMode::SPHERES;
    gl_spy::Recording const recording;
    ParticleDrawing const drawing = draw();
    EXPECT_EQ(drawing.path, ParticlePath::NONE);
    EXPECT_EQ(drawing.mode, ParticleMode::SPHERES);
    EXPECT_EQ(recording.texts(), Texts{});
}

TEST_F(ParticleRenderer_calls_test, withoutLayerBuffersAreDeletedAllTheSame) {
    std::size_t const before = driver.liveObjects();
    draw();
    layer.reset();
    VL_Raster = nullptr;
    renderer.release();
    EXPECT_EQ(driver.liveObjects(), before);
}
