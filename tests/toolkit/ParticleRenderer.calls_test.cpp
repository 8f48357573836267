#include "toolkit/ParticleRenderer.h"

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "internal/misuse.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"
#include "tests/toolkit/particle_values.h"
#include "toolkit/Layer.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST_F(ParticleRenderer_calls_test, releaseDeletesEverythingThatDrawingsMade) {
    std::size_t const before = driver.liveObjects();
    for (unsigned int const channel : {VELOCITY, ENERGY}) {
        for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
            look.channel = channel;
            look.mode = mode;
            look.colors.colors.assign(channel == ENERGY ? 7U : 2U, red);
            draw();
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
    if (misuse::ARE_LIFETIMES_CHECKED) {
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
