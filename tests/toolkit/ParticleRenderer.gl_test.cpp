#include "tests/support/counted_memory.h"
#include "tests/toolkit/particle_drawing.h"

#include <cstdlib>
#include <functional>

namespace vellum::toolkit {
namespace {

constexpr ParticleMode MODES[] = {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS,
                                  ParticleMode::SOLID_ARROWS};

// == Thinning ==

TEST_F(ParticleRenderer_gl_test, percentDrawsThatManyParticles) {
    constexpr unsigned int SIDE = 16;
    addSquare(SIDE, 0, 1);
    look.size = 5;
    for (unsigned int const channel : {VELOCITY, ENERGY, ParticleChannel_v2::NONE, COLOR}) {
        look.colorChannel = channel == COLOR ? COLOR : ParticleChannel_v2::NONE;
        for (std::size_t const colors : {2U, 40U}) {
            look.channel = channel;
            look.colors.colors.assign(colors, red);
            for (float const percent : {100.0F, 50.0F, 10.0F}) {
                look.percent = percent;
                for (Road const& road : ROADS) {
                    Picture const picture = drawOn(road);
                    unsigned int lit = 0;
                    unsigned int upper = 0;
                    for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
                        bool const isDrawn = isLit(ofParticle(picture, k, SIDE));
                        lit += isDrawn ? 1 : 0;
                        upper += isDrawn && k >= SIDE * SIDE / 2 ? 1 : 0;
                    }
                    EXPECT_EQ(lit, static_cast<unsigned int>(SIDE * SIDE * percent / 100)) << road.name;
                    EXPECT_NEAR(upper, lit / 2.0, lit * 0.2) << road.name;  // evenly
                }
            }
        }
    }
}

// == Changes ==

TEST_F(ParticleRenderer_gl_test, changesOfTheLookShowAtOnce) {
    addSquare(16, -3, 5);
    using Change = std::function<void(ParticleLook&)>;
    std::vector<Change> const changes{[](ParticleLook& l) { l.channel = ENERGY; },
                                      [](ParticleLook& l) { l.high = 5; },
                                      [](ParticleLook& l) { l.low = -3; },
                                      [](ParticleLook& l) {
                                          l.colors = {{green, red}, white};
                                      },
                                      [](ParticleLook& l) { l.colors = ColorMap::named("turbo"); },
                                      [](ParticleLook& l) { l.percent = 40; },
                                      [](ParticleLook& l) { l.size = 7; },
                                      [](ParticleLook& l) { l.channel = VELOCITY; },
                                      [](ParticleLook& l) { l.quantity = ParticleQuantity::Y; },
                                      [](ParticleLook& l) {
                                          l.quantity = ParticleQuantity::LENGTH;
                                          l.low = 0;
                                          l.colors = {{green, red}, white};
                                      },
                                      [](ParticleLook& l) { l.percent = 60; },
                                      [](ParticleLook& l) { l.high = 3; },
                                      [](ParticleLook& l) {
                                          l.colors = {{blue, red}, white};
                                      },
                                      [](ParticleLook& l) { l.channel = ParticleChannel_v2::NONE; },
                                      [](ParticleLook& l) {
                                          l.colors = {{green}, white};
                                      },
                                      [](ParticleLook& l) {
                                          l.channel = VELOCITY;
                                          l.mode = ParticleMode::SPHERES;
                                          l.size = 0.1F;
                                      },
                                      [](ParticleLook& l) { l.colorChannel = COLOR; },
                                      [](ParticleLook& l) { l.sizeChannel = SIZE; },
                                      [](ParticleLook& l) { l.size = 0.05F; },
                                      [](ParticleLook& l) { l.colorChannel = ParticleChannel_v2::NONE; },
                                      [](ParticleLook& l) { l.high = 5; },
                                      [](ParticleLook& l) { l.colors.colors[0] = white; },
                                      [](ParticleLook& l) { l.colorChannel = COLOR; },
                                      [](ParticleLook& l) { l.mode = ParticleMode::ARROWS; },
                                      [](ParticleLook& l) { l.mode = ParticleMode::SOLID_ARROWS; },
                                      [](ParticleLook& l) { l.size = 0.03F; },
                                      [](ParticleLook& l) { l.colorChannel = ParticleChannel_v2::NONE; },
                                      [](ParticleLook& l) { l.high = 4; },
                                      [](ParticleLook& l) { l.mode = ParticleMode::ARROWS; },
                                      [](ParticleLook& l) { l.sizeChannel = ParticleChannel_v2::NONE; },
                                      [](ParticleLook& l) { l.quantity = ParticleQuantity::X; },
                                      [](ParticleLook& l) {
                                          l.mode = ParticleMode::POINTS;
                                          l.size = 3;
                                      },
                                      [](ParticleLook& l) { l.sizeChannel = SIZE; },
                                      [](ParticleLook& l) { l.percent = 30; },
                                      [](ParticleLook& l) { l.size = 5; }};
    for (Road const& road : ROADS) {
        layer->play(road);
        look = ParticleLook();
        look.size = 5;
        look.high = 4;
        ParticleRenderer kept;
        for (std::size_t i = 0; i < changes.size(); ++i) {
            SCOPED_TRACE(std::string(road.name) + " " + std::to_string(i));
            changes[i](look);
            if (look.mode == ParticleMode::SPHERES && !road.hasShaders) {
                look.size = 0.05F;
            }
            Picture const fresh = drawOn(road);
            layer->play(road);
            clear();
            drawParticles(kept, system, look, View::current());
            EXPECT_TRUE(readPixels() == fresh);
        }
        layer->play(ROADS[0]);
        kept.release();
    }
}

TEST_F(ParticleRenderer_gl_test, markedChangesAndNewParticlesShow) {
    look.size = 9;
    look.high = 1;
    for (unsigned int const channel : {VELOCITY, ENERGY, COLOR}) {
        look.colorChannel = channel == COLOR ? COLOR : ParticleChannel_v2::NONE;
        for (Road const& road : ROADS) {
            SCOPED_TRACE(road.name);
            layer->play(road);
            ParticleSystem_v2 moving;
            addChannels(moving);
            moving.addParticles(1);
            moving.firstChunk()->channelData(0)->asVectors()[0] = {0.5F, 0.5F, 0};
            look.channel = channel;
            ParticleRenderer own;
            drawParticles(own, moving, look, View::current());
            moving.firstChunk()->channelData(0)->asVectors()[0] = {-0.5F, -0.5F, 0};
            moving.firstChunk()->channelData(VELOCITY)->asVectors()[0] = {1, 0, 0};
            moving.firstChunk()->channelData(ENERGY)->asFloats()[0] = 1;
            moving.firstChunk()->channelData(COLOR)->asVectors()[0] = {1, 0, 0};
            own.markChanged();
            clear();
            drawParticles(own, moving, look, View::current());
            expectColor(at(readPixels(), 64, 192), red);
            EXPECT_FALSE(isLit(at(readPixels(), 192, 64)));

            moving.addParticles(1);  // at the origin, without markChanged()
            moving.firstChunk()->channelData(COLOR)->asVectors()[1] = {0, 0, 1};
            clear();
            drawParticles(own, moving, look, View::current());
            expectColor(at(readPixels(), 128, 128), blue);
            own.release();
        }
    }
}

TEST_F(ParticleRenderer_gl_test, releasedRendererDrawsAgain) {
    addSquare(8, 0, 1);
    look.channel = ENERGY;
    look.size = 9;
    draw();
    Picture const before = readPixels();
    renderer.release();
    renderer.release();
    clear();
    draw();
    EXPECT_TRUE(readPixels() == before);
}

TEST_F(ParticleRenderer_gl_test, movedRendererGoesOn) {
    addSquare(8, 0, 1);
    look.size = 9;
    draw();
    Picture const before = readPixels();
    ParticleRenderer other(std::move(renderer));
    clear();
    drawParticles(other, system, look, View::current());
    EXPECT_TRUE(readPixels() == before);
    renderer = std::move(other);
    clear();
    other.markChanged();
    draw();
    EXPECT_TRUE(readPixels() == before);
    drawParticles(other, system, look, View::current());
    other.release();
}

// == Cost and state ==

TEST_F(ParticleRenderer_gl_test, unchangedFramesTakeNoMemory) {
    addSquare(130, -3, 5);  // more than one chunk
    for (Road const& road : ROADS) {
        layer->play(road);
        for (ParticleMode const mode : MODES) {
            for (unsigned int const channel : {VELOCITY, ENERGY, COLOR}) {
                for (char const* const map : {"gray", "viridis"}) {
                    look = {mode, channel, ParticleQuantity::LENGTH, 0, 4, ColorMap::named(map), 0.01F};
                    look.colorChannel = channel == COLOR ? COLOR : ParticleChannel_v2::NONE;
                    look.sizeChannel = channel == ENERGY ? SIZE : ParticleChannel_v2::NONE;
                    ParticleRenderer own;
                    for (int frame = 0; frame < 2; ++frame) {
                        drawParticles(own, system, look, View::current());
                    }
                    std::size_t const before = counted_memory::allocations();
                    for (int frame = 0; frame < 2; ++frame) {
                        drawParticles(own, system, look, View::current());
                    }
                    EXPECT_EQ(counted_memory::allocations(), before) << road.name << " " << channel << map;
                    own.release();
                }
            }
        }
    }
}

TEST_F(ParticleRenderer_gl_test, stateIsRestored) {
    addSquare(4, 0, 1);
    glMatrixMode(GL_TEXTURE);
    for (ParticleMode const mode : MODES) {
        for (unsigned int const channel : {VELOCITY, ENERGY, COLOR}) {
            look.colorChannel = channel == COLOR ? COLOR : ParticleChannel_v2::NONE;
            for (Road const& road : ROADS) {
                SCOPED_TRACE(std::string(road.name) + " " + std::to_string(static_cast<int>(mode)));
                glViewport(3, 5, 200, 100);
                glColor4f(0.25F, 0.5F, 0.75F, 0.125F);
                layer->setLineWidth(3);
                layer->setFillingFront(FILLING_LINES);
                layer->setFillingBack(FILLING_SOLID);
                glEnable(GL_LIGHTING);
                glEnable(GL_TEXTURE_2D);
                glDisable(GL_BLEND);
                View const before = View::current();
                look.mode = mode;
                look.channel = channel;
                drawOn(road);
                View const after = View::current();
                EXPECT_TRUE(std::equal(before.projection.e, before.projection.e + 16, after.projection.e));
                EXPECT_TRUE(std::equal(before.modelView.e, before.modelView.e + 16, after.modelView.e));
                EXPECT_EQ(after.viewport.x, 3);
                EXPECT_EQ(after.viewport.y, 5);
                EXPECT_EQ(after.viewport.width, 200);
                EXPECT_EQ(after.viewport.height, 100);
                float color[4];
                glGetFloatv(GL_CURRENT_COLOR, color);
                EXPECT_EQ(color[0], 0.25F);
                EXPECT_EQ(color[1], 0.5F);
                EXPECT_EQ(color[2], 0.75F);
                EXPECT_EQ(color[3], 0.125F);
                float lineWidth = 0;
                glGetFloatv(GL_LINE_WIDTH, &lineWidth);
                EXPECT_EQ(lineWidth, 3);
                GLint filling[2];
                glGetIntegerv(GL_POLYGON_MODE, filling);
                EXPECT_EQ(filling[0], GL_LINE);
                EXPECT_EQ(filling[1], GL_FILL);
                EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
                EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
                EXPECT_FALSE(glIsEnabled(GL_BLEND));
                EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
                EXPECT_FALSE(glIsEnabled(GL_COLOR_ARRAY));
                EXPECT_FALSE(glIsEnabled(GL_NORMAL_ARRAY));
                GLint value = 0;
                glGetIntegerv(GL_MATRIX_MODE, &value);
                EXPECT_EQ(value, GL_TEXTURE);
                glGetIntegerv(GL_CURRENT_PROGRAM, &value);
                EXPECT_EQ(value, 0);
                glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &value);
                EXPECT_EQ(value, 0);
            }
        }
    }
}

// == Nothing to draw ==

TEST_F(ParticleRenderer_gl_test, withoutParticlesNothingIsDrawn) {
    EXPECT_EQ(draw().path, ParticlePath::NONE);
    addSquare(4, 0, 1);
    ParticleSystem_v2 strange;
    strange.addChannel("velocity", ParticleChannel_v2::VECTOR);
    strange.addParticles(3);
    EXPECT_EQ(drawParticles(renderer, strange, look, View::current()).path, ParticlePath::NONE);
    for (float const size : {0.0F, -1.0F, notANumber, infinite}) {
        look.size = size;
        EXPECT_EQ(draw().path, ParticlePath::NONE) << size;
    }
    look.size = 4;
    for (float const percent : {0.0F, -1.0F, 1.0F, notANumber}) {
        look.percent = percent;
        EXPECT_EQ(draw().path, ParticlePath::NONE) << percent;
    }
    look.percent = 100;
    for (unsigned int k = 0; k < 16; ++k) {
        system.firstChunk()->channelData(0)->asVectors()[k].x = notANumber;
    }
    look.channel = ENERGY;
    EXPECT_EQ(draw().path, ParticlePath::NONE);
    Picture const picture = readPixels();
    EXPECT_TRUE(std::all_of(picture.begin(), picture.end(), [](unsigned char v) { return v == 0; }));
}

TEST_F(ParticleRenderer_gl_test, rangesAndMapsWithoutMeaningRaiseNoError) {
    addSquare(4, -1, 1);
    double const values[] = {
        0, -1, 1e300, -1e300, std::nan(""), static_cast<double>(infinite), -static_cast<double>(infinite)};
    for (ParticleMode const mode : MODES) {
        for (unsigned int const channel : {VELOCITY, ENERGY}) {
            for (std::size_t const colors : {0U, 1U, 2U, 3U, 3000U}) {
                look.mode = mode;
                look.channel = channel;
                look.colors.colors.assign(colors, red);
                for (double const low : values) {
                    look.low = low;
                    look.high = values[static_cast<std::size_t>(std::abs(low) < 2 ? 2 : 4)];
                    EXPECT_NE(draw().path, ParticlePath::NONE);
                    look.high = 1;
                    draw();
                }
            }
        }
    }
}

}  // namespace
}  // namespace vellum::toolkit
