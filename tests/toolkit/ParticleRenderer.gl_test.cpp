#include "toolkit/ParticleRenderer.h"

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "internal/misuse.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/counted_memory.h"
#include "toolkit/Layer.h"
#include "toolkit/internal/gl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

constexpr unsigned int EXTENSIONS = 0x1F03;
constexpr unsigned int VERSION = 0x1F02;
constexpr unsigned int VELOCITY = 1;
constexpr unsigned int ENERGY = 2;

constexpr Color4<float> blue{0, 0, 1, 1};
constexpr Color4<float> red{1, 0, 0, 1};
constexpr Color4<float> green{0, 1, 0, 1};
constexpr Color4<float> white{1, 1, 1, 1};

float const notANumber = std::nanf("");
float const infinite = std::numeric_limits<float>::infinity();

using Picture = std::vector<unsigned char>;

/// A driver and its memory that lead to one of the paths.
struct Road {
    char const* name;
    ParticlePath path;
    bool hasShaders;
    bool hasMemory;
};

const std::vector<Road> ROADS{{"bufferAndEffect", ParticlePath::BUFFER_AND_EFFECT, true, true},
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

    static void addChannels(ParticleSystem_v2& system) {
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        system.addChannel("velocity", ParticleChannel_v2::VECTOR);
        system.addChannel("energy", ParticleChannel_v2::SCALAR);
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
            }
        }
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

    ParticleDrawing draw() { return drawParticles(renderer, system, look, View::current()); }

    /// Draws on one road, with a renderer of its own.
    Picture drawOn(Road const& road) {
        clear();
        layer->play(road);
        ParticleRenderer own;
        ParticleDrawing const drawing = drawParticles(own, system, look, View::current());
        EXPECT_EQ(drawing.path, road.path) << road.name;
        own.release();
        layer->play(ROADS[0]);
        return readPixels();
    }

    std::unique_ptr<PlayedLayer> layer;
    ParticleSystem_v2 system;
    ParticleRenderer renderer;
    ParticleLook look;
};

// == Colors ==

struct Colored {
    char const* name;
    std::function<void(ParticleLook&)> choose;
    float low;  // of the particles' values
    float high;
};

/// The value that a look shows of a particle whose energy this is.
double shownOf(ParticleLook const& look, double energy) {
    if (look.channel == ENERGY) {
        return energy;
    }
    switch (look.quantity) {
    case ParticleQuantity::X:
        return 0.6 * energy;
    case ParticleQuantity::Y:
        return -0.8 * energy;
    case ParticleQuantity::Z:
        return 0;
    case ParticleQuantity::LENGTH:
        break;
    }
    return std::abs(energy);
}

const std::vector<Colored> COLORED{
    {"noChannel", [](ParticleLook& look) { look.channel = ParticleChannel_v2::NONE; }, -3, 5},
    {"length",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.high = 4;
     },
     -3, 5},
    {"lengthFromBelowZero",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.low = -2;
         look.high = 4;
     },
     -3, 5},
    {"lengthFromAboveZero",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.low = 1;
         look.high = 4;
     },
     -3, 5},
    {"hugeLength",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.high = 4e25;
     },
     -3e25F, 5e25F},
    {"tinyLength",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.high = 4e-25;
     },
     -3e-25F, 5e-25F},
    {"x",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.quantity = ParticleQuantity::X;
         look.low = -1.5;
         look.high = 2;
     },
     -3, 5},
    {"y",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.quantity = ParticleQuantity::Y;
         look.low = -1.5;
         look.high = 2;
     },
     -3, 5},
    {"z",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.quantity = ParticleQuantity::Z;
         look.low = -1.5;
         look.high = 2;
     },
     -3, 5},
    {"scalar",
     [](ParticleLook& look) {
         look.channel = ENERGY;
         look.low = -2;
         look.high = 4;
     },
     -3, 5},
    {"smallScalar",
     [](ParticleLook& look) {
         look.channel = ENERGY;
         look.low = -0.2;
         look.high = 0.4;
     },
     -0.3F, 0.5F},
    {"scalarWithMap",
     [](ParticleLook& look) {
         look.channel = ENERGY;
         look.low = -2;
         look.high = 4;
         look.colors = ColorMap::named("turbo");
     },
     -3, 5},
    {"lengthWithMap",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.high = 4;
         look.colors = {{blue, red, green}, white};
     },
     -3, 5},
    {"oneColor",
     [](ParticleLook& look) {
         look.channel = ENERGY;
         look.high = 4;
         look.colors = {{green}, white};
     },
     -3, 5},
    {"emptyRange",
     [](ParticleLook& look) {
         look.channel = VELOCITY;
         look.low = 2;
         look.high = 2;
     },
     -3, 5}};

class ParticleRenderer_colored_test : public ParticleRenderer_gl_test,
                                      public testing::WithParamInterface<Colored> {};

TEST_P(ParticleRenderer_colored_test, allPathsShowTheColorsOfTheMap) {
    constexpr unsigned int SIDE = 16;
    addSquare(SIDE, GetParam().low, GetParam().high);
    look.channel = ENERGY;
    look.size = 9;
    GetParam().choose(look);
    Picture first;
    for (Road const& road : ROADS) {
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        if (first.empty()) {
            savePicture(std::string("toolkit_particles_") + GetParam().name);
            first = picture;
        }
        int worst = 0;
        for (std::size_t i = 0; i < picture.size(); ++i) {
            worst = std::max(worst, std::abs(int{picture[i]} - int{first[i]}));
        }
        EXPECT_LE(worst, 2);
        float const* const energies = system.firstChunk()->channelData(ENERGY)->asFloats();
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            SCOPED_TRACE(k);
            double const value = shownOf(look, static_cast<double>(energies[k]));
            bool const hasRange = look.high > look.low;
            double const t = hasRange           ? (value - look.low) / (look.high - look.low)
                             : value > look.low ? 2
                                                : 0;
            // At the end of the range single precision may decide either way.
            if (std::abs(t - 1) > 1e-3) {
                expectColor(ofParticle(picture, k, SIDE),
                            look.colors.at(look.channel == ParticleChannel_v2::NONE ? 0 : t));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, ParticleRenderer_colored_test, testing::ValuesIn(COLORED),
                         [](testing::TestParamInfo<Colored> const& info) {
                             return std::string(info.param.name);
                         });

TEST_F(ParticleRenderer_gl_test, largestValueHasTheLastColorOnAllPaths) {
    addSquare(8, 0.7F, 0.7F);
    look.size = 20;
    for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES}) {
        for (unsigned int const channel : {VELOCITY, ENERGY}) {
            look.mode = mode;
            look.size = mode == ParticleMode::POINTS ? 20.0F : 0.2F;
            look.channel = channel;
            look.high = channel == ENERGY ? static_cast<double>(0.7F) : 0.7;
            for (Road const& road : ROADS) {
                if (mode == ParticleMode::POINTS || road.hasShaders) {
                    Pixel const pixel = ofParticle(drawOn(road), 27, 8);
                    EXPECT_GT(pixel[0], 100) << road.name;
                    EXPECT_LT(pixel[1], 3) << road.name;
                }
            }
        }
    }
}

TEST_F(ParticleRenderer_gl_test, spheresHaveTheColorsOfAMap) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, -3, 5);
    look = {ParticleMode::SPHERES,      ENERGY, ParticleQuantity::LENGTH, -2, 4,
            ColorMap::named("viridis"), 0.22F};
    for (Road const& road : ROADS) {
        if (!road.hasShaders) {
            continue;
        }
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        savePicture(std::string("toolkit_spheres_") + road.name);
        float const* const energies = system.firstChunk()->channelData(ENERGY)->asFloats();
        // The light of the effect shades the middle of a sphere by this.
        float const shade = 0.5F * 0.5F / std::sqrt(1.5F) + 0.5F;
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            Color4<float> const c = look.colors.at((static_cast<double>(energies[k]) + 2) / 6);
            expectColor(ofParticle(picture, k, SIDE), {c.r * shade, c.g * shade, c.b * shade, 1}, 10);
        }
    }
}

TEST_F(ParticleRenderer_gl_test, valuesThatAreNoNumbersHaveTheColorAbove) {
    addSquare(4, 0, 1);
    look.size = 9;
    look.channel = ENERGY;
    look.colors = {{blue, red}, green};
    system.firstChunk()->channelData(ENERGY)->asFloats()[5] = notANumber;
    system.firstChunk()->channelData(ENERGY)->asFloats()[6] = infinite;
    system.firstChunk()->channelData(ENERGY)->asFloats()[7] = -infinite;
    system.firstChunk()->channelData(VELOCITY)->asVectors()[5] = {notANumber, 0, 0};
    for (Road const& road : ROADS) {
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        expectColor(ofParticle(picture, 5, 4), green);
        expectColor(ofParticle(picture, 6, 4), green);
        expectColor(ofParticle(picture, 7, 4), blue);
    }
    look.channel = VELOCITY;
    look.quantity = ParticleQuantity::X;
    for (Road const& road : ROADS) {
        expectColor(ofParticle(drawOn(road), 5, 4), green);
    }
    // Without a copy.
    look.quantity = ParticleQuantity::LENGTH;
    for (Road const& road : ROADS) {
        SCOPED_TRACE(road.name);
        expectColor(ofParticle(drawOn(road), 5, 4), {0, 0, 0, 1});
    }
}

TEST_F(ParticleRenderer_gl_test, particlesWithoutAPlaceAreLeftOut) {
    addSquare(4, 0, 1);
    Vector3<float>* const positions = system.firstChunk()->channelData(0)->asVectors();
    positions[3] = {notANumber, 0, 0};
    positions[5] = {0, notANumber, 0};
    positions[6] = {infinite, 0, 0};
    positions[9] = {0, 0, notANumber};
    look.colors = {{red, red}, red};
    for (unsigned int const channel : {VELOCITY, ENERGY, ParticleChannel_v2::NONE}) {
        for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES}) {
            look.mode = mode;
            look.size = mode == ParticleMode::POINTS ? 9.0F : 0.2F;
            look.channel = channel;
            for (Road const& road : ROADS) {
                if (mode == ParticleMode::SPHERES && !road.hasShaders) {
                    continue;
                }
                SCOPED_TRACE(std::string(road.name) + " " + std::to_string(channel));
                Picture const picture = drawOn(road);
                unsigned int lit = 0;
                for (unsigned int k = 0; k < 16; ++k) {
                    lit += isLit(ofParticle(picture, k, 4)) ? 1 : 0;
                }
                EXPECT_EQ(lit, 12U);
                EXPECT_FALSE(isLit(at(picture, 128, 128)));
            }
        }
    }
}

// == Spheres ==

struct Scene {
    char const* name;
    Viewport viewport;
    bool isPerspective;
    Vector3<double> center;
};

class ParticleRenderer_sphere_test : public ParticleRenderer_gl_test,
                                     public testing::WithParamInterface<Scene> {
protected:
    void load() {
        Viewport const& v = GetParam().viewport;
        glViewport(v.x, v.y, v.width, v.height);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        double const aspect = v.aspect();
        if (GetParam().isPerspective) {
            // A part of a larger picture, as tiles are.
            glFrustum(-0.6 * aspect, 0.4 * aspect, -0.45, 0.55, 1, 40);
        } else {
            glOrtho(-5 * aspect, 5 * aspect, -5, 5, -20, 20);
        }
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        if (GetParam().isPerspective) {
            glTranslated(0, 0, -12);
        }
        glRotated(25, 1, 0.5, 0.2);
    }

    struct Extent {
        int left = 1 << 30;
        int right = -1;
        int top = 1 << 30;
        int bottom = -1;
    };

    Extent extent() {
        Picture const picture = readPixels();
        Extent result;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (isLit(at(picture, x, y))) {
                    result = {std::min(result.left, x), std::max(result.right, x), std::min(result.top, y),
                              std::max(result.bottom, y)};
                }
            }
        }
        return result;
    }
};

TEST_P(ParticleRenderer_sphere_test, spheresAreRoundAndAsWideAsTheirDiameter) {
    load();
    View const view = View::current();
    system.addParticles(1);
    Vector3<double> const center = GetParam().center;
    system.firstChunk()->channelData(0)->asVectors()[0] = convert<float>(center);
    look.mode = ParticleMode::SPHERES;
    look.size = 1.8F;
    EXPECT_EQ(draw().mode, ParticleMode::SPHERES);
    savePicture(std::string("toolkit_sphere_") + GetParam().name);
    double const diameter = view.pixelsPerUnit(center) * static_cast<double>(look.size);
    ScreenPoint const middle = view.project(center);
    double const x = GetParam().viewport.x + middle.x;
    double const y = height - GetParam().viewport.y - GetParam().viewport.height + middle.y;
    Extent const seen = extent();
    EXPECT_NEAR(seen.right - seen.left + 1, diameter, 1.5);
    EXPECT_NEAR(seen.bottom - seen.top + 1, diameter, 1.5);
    EXPECT_NEAR((seen.left + seen.right + 1) / 2.0, x, 1);
    EXPECT_NEAR((seen.top + seen.bottom + 1) / 2.0, y, 1);
    // Round: nothing in the corners of the square around it.
    double const corner = diameter / 2 * 0.75;
    Picture const picture = readPixels();
    for (int const sx : {-1, 1}) {
        for (int const sy : {-1, 1}) {
            EXPECT_FALSE(
                isLit(at(picture, static_cast<int>(x + sx * corner), static_cast<int>(y + sy * corner))));
        }
    }
}

TEST_P(ParticleRenderer_sphere_test, spheresAreAsDeepAsTheyAreWide) {
    load();
    View const view = View::current();
    system.addParticles(1);
    Vector3<double> const center = GetParam().center;
    system.firstChunk()->channelData(0)->asVectors()[0] = convert<float>(center);
    look.mode = ParticleMode::SPHERES;
    look.size = 1.8F;
    draw();
    ScreenPoint const middle = view.project(center);
    float depth = 0;
    glReadPixels(GetParam().viewport.x + static_cast<int>(middle.x),
                 GetParam().viewport.y + GetParam().viewport.height - 1 - static_cast<int>(middle.y), 1, 1,
                 GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    Vector3<double> const front = center + view.axes().towardViewer * 0.9;
    EXPECT_NEAR(static_cast<double>(depth), view.project(front).depth,
                0.02 * std::abs(view.project(center).depth - view.project(front).depth));
}

TEST_P(ParticleRenderer_sphere_test, withoutGeometryStagesSpheresArePointsOfTheirWidth) {
    load();
    View const view = View::current();
    gl_spy::Script driver;
    driver.string(VERSION, "2.1.0").string(EXTENSIONS, "GL_ARB_vertex_buffer_object");
    system.addParticles(3);
    Vector3<double> const center = GetParam().center;
    Vector3<double> const aside = view.axes().up * 20.0;  // outside the picture
    Vector3<float>* const positions = system.firstChunk()->channelData(0)->asVectors();
    positions[0] = convert<float>(center - aside);
    positions[1] = convert<float>(center);
    positions[2] = convert<float>(center + aside);
    look.mode = ParticleMode::SPHERES;
    look.size = 1.8F;
    ParticleDrawing const drawing = draw();
    EXPECT_EQ(drawing.mode, ParticleMode::POINTS);
    EXPECT_EQ(drawing.path, ParticlePath::BUFFER_AND_EFFECT);
    Extent const seen = extent();
    EXPECT_NEAR(seen.right - seen.left + 1, view.pixelsPerUnit(center) * static_cast<double>(look.size), 1.5);
}

INSTANTIATE_TEST_SUITE_P(Scenes, ParticleRenderer_sphere_test,
                         testing::Values(Scene{"perspective", {0, 0, 256, 256}, true, {0, 0, 0}},
                                         Scene{"perspectiveWide", {0, 30, 256, 128}, true, {0.5, 0.3, 1}},
                                         Scene{"perspectiveTall", {50, 0, 100, 256}, true, {0.2, -0.8, -1}},
                                         Scene{"perspectiveOffCenter", {0, 0, 256, 256}, true, {-3, 2.5, 1}},
                                         Scene{"orthographic", {0, 0, 256, 256}, false, {0, 0, 0}},
                                         Scene{"orthographicWide", {10, 20, 240, 120}, false, {3, -2, 1}},
                                         Scene{"orthographicTall", {50, 0, 100, 250}, false, {0.5, 3, -1}}),
                         [](testing::TestParamInfo<Scene> const& info) {
                             return std::string(info.param.name);
                         });

// == Arrows ==

TEST_F(ParticleRenderer_gl_test, arrowsAreAsLongAsTheirVectorsTimesTheSize) {
    system.addParticles(1);
    system.firstChunk()->channelData(0)->asVectors()[0] = {-0.5F, 0, 0};
    system.firstChunk()->channelData(VELOCITY)->asVectors()[0] = {2, 0, 0};
    struct Row {
        char const* name;
        ParticleQuantity quantity;
        double low;
        ColorMap colors;
    };
    for (Row const& row : {Row{"direct", ParticleQuantity::LENGTH, 0, {{blue, red}, white}},
                           {"low", ParticleQuantity::LENGTH, 1, {{blue, red}, white}},
                           {"map", ParticleQuantity::LENGTH, 0, {{blue, green, red}, white}},
                           {"component", ParticleQuantity::X, 0, {{blue, red}, white}}}) {
        SCOPED_TRACE(row.name);
        clear();
        look = {ParticleMode::ARROWS, VELOCITY, row.quantity, row.low, 4, row.colors, 0.5F};
        EXPECT_EQ(draw().mode, ParticleMode::ARROWS);
        savePicture(std::string("toolkit_arrow_") + row.name);
        Picture const picture = readPixels();
        int left = width;
        int right = 0;
        for (int x = 0; x < width; ++x) {
            for (int y = 120; y < 136; ++y) {
                if (isLit(at(picture, x, y))) {
                    left = std::min(left, x);
                    right = std::max(right, x);
                }
            }
        }
        EXPECT_NEAR(left, 64, 2);
        EXPECT_NEAR(right, 64 + 128, 2);  // 2 * 0.5 units of 128 pixels
    }
}

TEST_F(ParticleRenderer_gl_test, headsOfArrowsAreNotFlattenedInAWideViewport) {
    glViewport(0, 64, 256, 128);
    system.addParticles(1);
    system.firstChunk()->channelData(0)->asVectors()[0] = {-0.5F, 0, 0};
    system.firstChunk()->channelData(VELOCITY)->asVectors()[0] = {1, 0, 0};
    look = {ParticleMode::ARROWS, VELOCITY, ParticleQuantity::LENGTH, 0, 4, {{red, red}, red}, 1};
    draw();
    savePicture("toolkit_arrow_wide");
    Picture const picture = readPixels();
    int top = height;
    int bottom = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (isLit(at(picture, x, y))) {
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    // The back corners are two thirds of half the arrow, which is 128 pixels long, turned by 0.8 to either side.
    double const half = 64 * 2 / 3.0 * std::sin(0.8);
    EXPECT_NEAR(128 - top, half, 2);
    EXPECT_NEAR(bottom + 1 - 128, half, 2);
}

TEST_F(ParticleRenderer_gl_test, arrowsHaveTheColorsOfTheMapOnBothPaths) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, -4, 5);
    struct Row {
        ParticleQuantity quantity;
        double low;
        double high;
        ColorMap colors;
    };
    for (Row const& row : {Row{ParticleQuantity::LENGTH, 0, 4, {{blue, red}, green}},
                           {ParticleQuantity::LENGTH, 2, 4, {{blue, red}, green}},
                           {ParticleQuantity::LENGTH, 0, 4, {{blue, green, red}, white}},
                           {ParticleQuantity::LENGTH, 2, 2, {{blue, red}, white}},
                           {ParticleQuantity::X, -2, 2, {{blue, green, red}, white}},
                           {ParticleQuantity::Y, -1, 3, {{blue, red}, white}}}) {
        look = {ParticleMode::ARROWS, VELOCITY, row.quantity, row.low, row.high, row.colors, 0.05F};
        for (Road const& road : ROADS) {
            if (!road.hasShaders) {
                continue;
            }
            SCOPED_TRACE(std::string(road.name) + " " + std::to_string(row.low));
            Picture const picture = drawOn(road);
            savePicture(std::string("toolkit_arrows_") + road.name);
            for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
                Vector3<float> const v = system.firstChunk()->channelData(VELOCITY)->asVectors()[k];
                double const speed = length(convert<double>(v));
                if (speed < 1) {
                    continue;  // shorter than its line is wide
                }
                double const value = row.quantity == ParticleQuantity::LENGTH ? speed
                                     : row.quantity == ParticleQuantity::X    ? static_cast<double>(v.x)
                                                                              : static_cast<double>(v.y);
                double const t = row.high > row.low ? (value - row.low) / (row.high - row.low)
                                 : value > row.low  ? 2
                                                    : 0;
                // On the shaft, a fifth of the way to the tip.
                double const x = 128 + 128 * (place(k % SIDE, SIDE) + 0.2 * 0.05 * static_cast<double>(v.x));
                double const y = 128 - 128 * (place(k / SIDE, SIDE) + 0.2 * 0.05 * static_cast<double>(v.y));
                SCOPED_TRACE(k);
                // At the end of the range single precision may decide either way.
                if (std::abs(t - 1) > 1e-3) {
                    expectColor(at(picture, static_cast<int>(x), static_cast<int>(y)), row.colors.at(t), 2.5);
                }
            }
        }
    }
}

TEST_F(ParticleRenderer_gl_test, arrowsAlongVectorsThatAreNotFiniteAreLeftOut) {
    addSquare(2, 1, 1);
    Vector3<float>* const vectors = system.firstChunk()->channelData(VELOCITY)->asVectors();
    vectors[0] = {notANumber, 0, 0};
    vectors[1] = {infinite, 1, 0};
    vectors[2] = {0, 0, -infinite};
    for (std::vector<Color4<float>> const& colors :
         {std::vector<Color4<float>>{red, red}, std::vector<Color4<float>>{red, red, red}}) {
        clear();
        look = {ParticleMode::ARROWS, VELOCITY, ParticleQuantity::LENGTH, 0, 4, {colors, red}, 0.2F};
        draw();
        Picture const picture = readPixels();
        int lit = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                lit += isLit(at(picture, x, y)) ? 1 : 0;
                EXPECT_FALSE(isLit(at(picture, x, y)) && (x < 128 || y > 128)) << x << " " << y;
            }
        }
        EXPECT_GT(lit, 20);
    }
}

TEST_F(ParticleRenderer_gl_test, arrowsWithoutVectorsAreSmallPoints) {
    addSquare(4, 0, 1);
    look.mode = ParticleMode::ARROWS;
    look.size = 50;
    look.colors = {{blue, red}, white};
    for (unsigned int const channel : {ENERGY, ParticleChannel_v2::NONE, 77U}) {
        clear();
        look.channel = channel;
        EXPECT_EQ(draw().mode, ParticleMode::POINTS);
        Picture const picture = readPixels();
        int lit = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                lit += isLit(at(picture, x, y)) ? 1 : 0;
            }
        }
        EXPECT_EQ(lit, 16 * 4);
        expectColor(ofParticle(picture, 15, 4), channel == ENERGY ? red : blue);
    }
}

// == Thinning ==

TEST_F(ParticleRenderer_gl_test, percentDrawsThatManyParticles) {
    constexpr unsigned int SIDE = 16;
    addSquare(SIDE, 0, 1);
    look.size = 5;
    for (unsigned int const channel : {VELOCITY, ENERGY, ParticleChannel_v2::NONE}) {
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
                                      [](ParticleLook& l) { l.mode = ParticleMode::ARROWS; },
                                      [](ParticleLook& l) { l.quantity = ParticleQuantity::X; },
                                      [](ParticleLook& l) {
                                          l.mode = ParticleMode::POINTS;
                                          l.size = 3;
                                      }};
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
    for (unsigned int const channel : {VELOCITY, ENERGY}) {
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
            own.markChanged();
            clear();
            drawParticles(own, moving, look, View::current());
            expectColor(at(readPixels(), 64, 192), red);
            EXPECT_FALSE(isLit(at(readPixels(), 192, 64)));

            moving.addParticles(1);  // at the origin, without markChanged()
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
        for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
            for (unsigned int const channel : {VELOCITY, ENERGY}) {
                for (char const* const map : {"gray", "viridis"}) {
                    look = {mode, channel, ParticleQuantity::LENGTH, 0, 4, ColorMap::named(map), 0.01F};
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
    for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
        for (unsigned int const channel : {VELOCITY, ENERGY}) {
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

TEST_F(ParticleRenderer_gl_test, withoutLayerNothingIsDrawnAndRendererCanEnd) {
    if (vellum::misuse::ARE_LIFETIMES_CHECKED) {
        GTEST_SKIP() << "A drawing without a render layer ends this build; see misuse.gl_test.cpp.";
    }
    addSquare(4, 0, 1);
    ParticleRenderer own;
    drawParticles(own, system, look, View::current());
    layer.reset();
    VL_Raster = nullptr;
    look.mode = ParticleMode::SPHERES;
    ParticleDrawing const drawing = drawParticles(own, system, look, View::current());
    EXPECT_EQ(drawing.path, ParticlePath::NONE);
    EXPECT_EQ(drawing.mode, ParticleMode::SPHERES);
    own.release();
}

TEST_F(ParticleRenderer_gl_test, rangesAndMapsWithoutMeaningRaiseNoError) {
    addSquare(4, -1, 1);
    double const values[] = {
        0, -1, 1e300, -1e300, std::nan(""), static_cast<double>(infinite), -static_cast<double>(infinite)};
    for (ParticleMode const mode : {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
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
