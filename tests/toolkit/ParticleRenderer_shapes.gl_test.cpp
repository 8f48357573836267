#include "tests/gl_spy/gl_spy.h"
#include "tests/toolkit/particle_drawing.h"

namespace vellum::toolkit {
namespace {

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
    // The back corners are two thirds of half the arrow, which is 128 pixels long, turned by 0.8 to either
    // side.
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

}  // namespace
}  // namespace vellum::toolkit
