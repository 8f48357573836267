#pragma once

#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/toolkit/particle_values.h"
#include "toolkit/Layer.h"
#include "toolkit/ParticleRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/internal/gl.h"

/// The fixture of the tests that draw particles, on each of the ways that they take.
namespace vellum::toolkit {

inline float const notANumber = std::nanf("");
inline float const infinite = std::numeric_limits<float>::infinity();

using Picture = std::vector<unsigned char>;

/// A driver and its memory that lead to one of the paths.
struct Road {
    char const* name;
    ParticlePath path;
    bool hasShaders;
    bool hasMemory;
};

inline const std::vector<Road> ROADS{{"bufferAndEffect", ParticlePath::BUFFER_AND_EFFECT, true, true},
                                     {"chunksAndEffect", ParticlePath::CHUNKS_AND_EFFECT, true, false},
                                     {"buffer", ParticlePath::BUFFER, false, true},
                                     {"memory", ParticlePath::MEMORY, false, false}};

/// A layer for the drivers above. Scripts of the recording GL would allocate memory with every call.
class PlayedLayer : public Layer {
public:
    bool checkShaderSupport() const override { return hasShaders && Layer::checkShaderSupport(); }

    void play(Road const& road) {
        hasShaders = road.hasShaders;
        assumeFreeGpuMemory(road.hasMemory ? 1024 : 25);
    }

    bool hasShaders = true;
};

class ParticleRenderer_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer = std::make_unique<PlayedLayer>();
        layer->assumeFreeGpuMemory(1024);
        glViewport(0, 0, width, height);
        glEnable(GL_DEPTH_TEST);
        clear();
        addChannels(system);
    }

    void TearDown() override {
        renderer.release();
        layer.reset();
        GlTest::TearDown();
    }

    static void clear() {
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    /// `all` particles at places from -1 to 1 in a square, with values from `low` to `high`.
    void addSquare(unsigned int side, float low, float high) {
        system.addParticles(side * side);
        unsigned int k = 0;
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            for (unsigned int slot = 0; slot < chunk->count(); ++slot, ++k) {
                float const value =
                    low + (high - low) * static_cast<float>(k) / static_cast<float>(side * side - 1);
                chunk->channelData(0)->asVectors()[slot] = {place(k % side, side), place(k / side, side), 0};
                chunk->channelData(VELOCITY)->asVectors()[slot] = {value * 0.6F, -0.8F * value, 0};
                chunk->channelData(ENERGY)->asFloats()[slot] = value;
                chunk->channelData(COLOR)->asVectors()[slot] = colorOf(k);
                chunk->channelData(SIZE)->asFloats()[slot] = 1 + static_cast<float>(k % 3);
            }
        }
    }

    /// One of many different colors, none of which is dark.
    static Vector3<float> colorOf(unsigned int k) {
        return {1 - static_cast<float>(k * 37 % 101) / 150, static_cast<float>(k * 53 % 97) / 96,
                static_cast<float>(k * 71 % 89) / 88};
    }

    static float place(unsigned int k, unsigned int side) {
        return (static_cast<float>(k) + 0.5F) / static_cast<float>(side) * 2 - 1;
    }

    static Pixel at(Picture const& picture, int x, int y) {
        Pixel pixel{};
        std::copy_n(picture.begin() + std::ptrdiff_t{4} * (y * width + x), 4, pixel.begin());
        return pixel;
    }

    /// The pixel in the middle of a particle of a square.
    static Pixel ofParticle(Picture const& picture, unsigned int k, unsigned int side) {
        return at(picture, static_cast<int>(128 + 128 * place(k % side, side)),
                  static_cast<int>(128 - 128 * place(k / side, side)));
    }

    static bool isLit(Pixel const& pixel) { return pixel[0] + pixel[1] + pixel[2] > 60; }

    static void expectColor(Pixel const& pixel, Color4<float> const& color, double tolerance = 2) {
        EXPECT_NEAR(pixel[0], 255 * std::clamp(color.r, 0.0F, 1.0F), tolerance);
        EXPECT_NEAR(pixel[1], 255 * std::clamp(color.g, 0.0F, 1.0F), tolerance);
        EXPECT_NEAR(pixel[2], 255 * std::clamp(color.b, 0.0F, 1.0F), tolerance);
    }

    /// The path of a look on a road: fixed functions draw points with colors or sizes of their own, and solid
    /// arrows.
    ParticlePath pathOn(Road const& road) const {
        if (look.mode == ParticleMode::SOLID_ARROWS && (look.channel == VELOCITY || look.channel == COLOR)) {
            return ParticlePath::MEMORY;
        }
        bool const isOwn = look.colorChannel == COLOR || look.sizeChannel == SIZE;
        bool const isWithoutEffect = isOwn && (look.mode == ParticleMode::POINTS || !road.hasShaders);
        return !isWithoutEffect ? road.path : road.hasMemory ? ParticlePath::BUFFER : ParticlePath::MEMORY;
    }

    ParticleDrawing draw() { return drawParticles(renderer, system, look, View::current()); }

    /// Draws on one road, with a renderer of its own.
    Picture drawOn(Road const& road) {
        clear();
        layer->play(road);
        ParticleRenderer own;
        ParticleDrawing const drawing = drawParticles(own, system, look, View::current());
        EXPECT_EQ(drawing.path, pathOn(road)) << road.name;
        own.release();
        layer->play(ROADS[0]);
        return readPixels();
    }

    std::unique_ptr<PlayedLayer> layer;
    ParticleSystem_v2 system;
    ParticleRenderer renderer;
    ParticleLook look;
};

}  // namespace vellum::toolkit
