#include "tests/gl_spy/gl_spy.h"
#include "tests/toolkit/particle_drawing.h"
#include "toolkit/arrow_box.h"

#include <cstdlib>

namespace vellum::toolkit {
namespace {

/// The fixture of particles with colors and sizes of their own, and of solid arrows.
class ParticleRenderer_own_test : public ParticleRenderer_gl_test {
protected:
    Vector3<float>* positions() { return system.firstChunk()->channelData(0)->asVectors(); }
    Vector3<float>* vectors() { return system.firstChunk()->channelData(VELOCITY)->asVectors(); }
    Vector3<float>* colors() { return system.firstChunk()->channelData(COLOR)->asVectors(); }
    float* sizes() { return system.firstChunk()->channelData(SIZE)->asFloats(); }

    static Color4<float> shaded(Vector3<float> const& c, float shade) {
        return {c.x * shade, c.y * shade, c.z * shade, 1};
    }

    static int difference(Picture const& a, Picture const& b) {
        int worst = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            worst = std::max(worst, std::abs(int{a[i]} - int{b[i]}));
        }
        return worst;
    }

    /// The length of the lit part of the row of pixels through a particle, around it.
    static int widthAt(Picture const& picture, unsigned int k, unsigned int side) {
        auto const x = static_cast<int>(128 + 128 * place(k % side, side));
        auto const y = static_cast<int>(128 - 128 * place(k / side, side));
        int left = x;
        int right = x;
        while (left >= 0 && isLit(at(picture, left, y))) {
            --left;
        }
        while (right < 256 && isLit(at(picture, right, y))) {
            ++right;
        }
        return std::max(0, right - left - 1);
    }

    static int litPixels(Picture const& picture) {
        int lit = 0;
        for (int y = 0; y < 256; ++y) {
            for (int x = 0; x < 256; ++x) {
                lit += isLit(at(picture, x, y)) ? 1 : 0;
            }
        }
        return lit;
    }

    // The light of the sphere effect shades the middle of a sphere by this.
    float const middleShade = 0.5F * 0.5F / std::sqrt(1.5F) + 0.5F;
};

// == Colors ==

TEST_F(ParticleRenderer_own_test, pointsHaveTheirOwnColorsOnAllPaths) {
    constexpr unsigned int SIDE = 16;
    addSquare(SIDE, -3, 5);
    colors()[3] = {2, -1, 0.5F};
    colors()[4] = {1, notANumber, infinite};
    look.colorChannel = COLOR;
    look.channel = ENERGY;
    look.size = 9;
    Picture first;
    for (Road const& road : ROADS) {
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        if (first.empty()) {
            savePicture("toolkit_particles_ownColors");
            first = picture;
        }
        EXPECT_LE(difference(picture, first), 2);
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            SCOPED_TRACE(k);
            Vector3<float> const c = k == 3   ? Vector3<float>{1, 0, 0.5F}
                                     : k == 4 ? Vector3<float>{1, 0, 1}
                                              : colorOf(k);
            expectColor(ofParticle(picture, k, SIDE), shaded(c, 1), 1);
        }
    }
}

TEST_F(ParticleRenderer_own_test, spheresHaveTheirOwnColorsOnBothPaths) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, 0, 1);
    look.mode = ParticleMode::SPHERES;
    look.colorChannel = COLOR;
    look.size = 0.22F;
    Picture first;
    for (Road const& road : ROADS) {
        if (!road.hasShaders) {
            continue;
        }
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        savePicture(std::string("toolkit_spheres_ownColors_") + road.name);
        first = first.empty() ? picture : first;
        EXPECT_TRUE(picture == first);
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            SCOPED_TRACE(k);
            // The middle of a sphere lies at the corner of four pixels.
            expectColor(ofParticle(picture, k, SIDE), shaded(colorOf(k), middleShade), 8);
        }
    }
}

TEST_F(ParticleRenderer_own_test, spheresOfOwnColorsAreThoseOfTheLibrary) {
    addSquare(8, 0, 1);
    for (unsigned int k = 0; k < 64; ++k) {
        colors()[k] = {1, 0.5F, 0.25F};
    }
    look.mode = ParticleMode::SPHERES;
    look.size = 0.3F;
    look.colors = {{{1, 0.5F, 0.25F, 1}}, white};
    Picture const ofLibrary = drawOn(ROADS[0]);
    look.colorChannel = COLOR;
    EXPECT_LE(difference(drawOn(ROADS[0]), ofLibrary), 1);
}

TEST_F(ParticleRenderer_own_test, arrowsHaveTheirOwnColorsAndTheShapeOfOthers) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, -4, 5);
    for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
        vectors()[k] = vectors()[k] * 1e-12F;  // too short to be added to a position
    }
    look = {ParticleMode::ARROWS, VELOCITY, ParticleQuantity::X, 0, 4e-12, {{white, white}, white}, 0.05e12F};
    Picture const plain = drawOn(ROADS[0]);
    look.colorChannel = COLOR;
    look.sizeChannel = SIZE;  // not looked at
    for (Road const& road : ROADS) {
        if (!road.hasShaders) {
            continue;
        }
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        savePicture(std::string("toolkit_arrows_ownColors_") + road.name);
        for (std::size_t i = 0; i < picture.size(); i += 4) {
            EXPECT_EQ(picture[i] + picture[i + 1] + picture[i + 2] != 0, plain[i] != 0) << i;
        }
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            Vector3<float> const v = vectors()[k] * 1e12F;
            if (length(v) < 1) {
                continue;  // shorter than its line is wide
            }
            // On the shaft, a fifth of the way to the tip.
            float const x = 128 + 128 * (place(k % SIDE, SIDE) + 0.2F * 0.05F * v.x);
            float const y = 128 - 128 * (place(k / SIDE, SIDE) + 0.2F * 0.05F * v.y);
            SCOPED_TRACE(k);
            expectColor(at(picture, static_cast<int>(x), static_cast<int>(y)), shaded(colorOf(k), 1), 2);
        }
    }
}

TEST_F(ParticleRenderer_own_test, channelsOfOtherTypesAndNoneLeaveMapAndSize) {
    addSquare(4, 0, 1);
    look.size = 9;
    look.channel = ENERGY;
    Picture const plain = drawOn(ROADS[0]);
    look.colorChannel = ENERGY;
    look.sizeChannel = VELOCITY;
    EXPECT_TRUE(drawOn(ROADS[0]) == plain);
    look.colorChannel = 77;
    look.sizeChannel = 78;
    EXPECT_TRUE(drawOn(ROADS[0]) == plain);
}

TEST_F(ParticleRenderer_own_test, lightAndTexturesDoNotTouchTheColors) {
    addSquare(4, 0, 1);
    look.size = 9;
    look.colorChannel = COLOR;
    Picture const plain = drawOn(ROADS[0]);
    for (GLenum const capability : {GL_LIGHTING, GL_TEXTURE_2D, GL_BLEND}) {
        glEnable(capability);
        glBlendFunc(GL_ONE, GL_ONE);
        for (Road const& road : ROADS) {
            EXPECT_TRUE(drawOn(road) == plain) << road.name << " " << capability;
        }
        glDisable(capability);
    }
}

TEST_F(ParticleRenderer_own_test, particlesWithoutAPlaceAreLeftOutAndNotCounted) {
    addSquare(4, 0, 1);
    positions()[3] = {notANumber, 0, 0};
    positions()[6] = {0, infinite, 0};
    look.colorChannel = COLOR;
    look.channel = VELOCITY;
    for (ParticleMode const mode :
         {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS, ParticleMode::SOLID_ARROWS}) {
        look.mode = mode;
        look.size = mode == ParticleMode::POINTS ? 9.0F : 0.2F;
        vectors()[0] = {1, 0, 0};
        EXPECT_EQ(draw().count, 14U) << static_cast<int>(mode);
    }
    look.colorChannel = ParticleChannel_v2::NONE;
    look.mode = ParticleMode::POINTS;
    EXPECT_EQ(draw().count, 16U);  // by the library as they are
    look.channel = ENERGY;
    EXPECT_EQ(draw().count, 14U);
    look.percent = 50;
    look.channel = VELOCITY;
    EXPECT_EQ(draw().count, 8U);
    look.size = 0;
    EXPECT_EQ(draw().count, 0U);
}

// == Sizes ==

TEST_F(ParticleRenderer_own_test, pointsHaveTheirOwnSizesOnAllPaths) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, 0, 1);
    sizes()[10] = 0;
    sizes()[11] = -1;
    sizes()[12] = notANumber;
    sizes()[13] = infinite;
    for (unsigned int const color : {COLOR, ParticleChannel_v2::NONE}) {
        look.channel = ENERGY;
        look.colors = ColorMap::named("plasma");
        look.colorChannel = color;
        look.sizeChannel = SIZE;
        look.size = 6;
        Picture first;
        for (Road const& road : ROADS) {
            SCOPED_TRACE(road.name);
            Picture const picture = drawOn(road);
            if (first.empty()) {
                savePicture(std::string("toolkit_particles_ownSizes_") + (color == COLOR ? "colors" : "map"));
                first = picture;
            }
            EXPECT_LE(difference(picture, first), 2);
            for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
                SCOPED_TRACE(k);
                bool const isLeftOut = k >= 10 && k <= 13;
                EXPECT_EQ(widthAt(picture, k, SIDE), isLeftOut ? 0 : 6 * (1 + static_cast<int>(k % 3)));
                if (!isLeftOut) {
                    expectColor(ofParticle(picture, k, SIDE),
                                color == COLOR ? shaded(colorOf(k), 1) : look.colors.at(k / 63.0));
                }
            }
        }
        EXPECT_EQ(draw().count, 60U);
    }
}

TEST_F(ParticleRenderer_own_test, spheresHaveTheirOwnDiameters) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, 0, 1);
    for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
        sizes()[k] = 0.3F + 0.01F * static_cast<float>(k);  // more different ones than points may have steps
    }
    sizes()[10] = 0;
    sizes()[11] = -1;
    sizes()[12] = notANumber;
    sizes()[13] = infinite;
    look.mode = ParticleMode::SPHERES;
    look.sizeChannel = SIZE;
    look.size = 0.25F;
    look.channel = ENERGY;
    look.colors = {{green, red}, white};
    for (Road const& road : ROADS) {
        if (!road.hasShaders) {
            continue;
        }
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        savePicture(std::string("toolkit_spheres_ownSizes_") + road.name);
        for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
            SCOPED_TRACE(k);
            bool const isLeftOut = k >= 10 && k <= 13;
            EXPECT_NEAR(widthAt(picture, k, SIDE), isLeftOut ? 0 : 128 * 0.25F * sizes()[k], 1.5);
        }
    }
}

TEST_F(ParticleRenderer_own_test, spheresOfOwnDiametersAreAsDeepAsTheyAreWide) {
    system.addParticles(1);
    sizes()[0] = 3;
    look.mode = ParticleMode::SPHERES;
    look.sizeChannel = SIZE;
    look.size = 0.2F;
    draw();
    float depth = 0;
    glReadPixels(128, 128, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    View const view = View::current();
    Vector3<double> const front = view.axes().towardViewer * 0.3;
    EXPECT_NEAR(static_cast<double>(depth), view.project(front).depth, 0.005);
}

TEST_F(ParticleRenderer_own_test, withoutGeometryStagesSpheresArePointsOfTheirOwnDiameters) {
    constexpr unsigned int SIDE = 8;
    addSquare(SIDE, 0, 1);
    gl_spy::Script driver;
    driver.string(VERSION, "2.1.0").string(EXTENSIONS, "GL_ARB_vertex_buffer_object");
    look.mode = ParticleMode::SPHERES;
    look.sizeChannel = SIZE;
    look.size = 8 / 128.0F;
    look.colors = {{green}, white};
    EXPECT_EQ(draw().mode, ParticleMode::POINTS);
    Picture const picture = readPixels();
    for (unsigned int k = 0; k < SIDE * SIDE; ++k) {
        EXPECT_EQ(widthAt(picture, k, SIDE), 8 * (1 + static_cast<int>(k % 3))) << k;
    }
}

// == Solid arrows ==

TEST_F(ParticleRenderer_own_test, solidArrowsAreAsLongAsTheirVectorsTimesTheSize) {
    system.addParticles(2);
    positions()[0] = {-0.5F, 0.5F, 0};
    positions()[1] = {-0.5F, -0.5F, 0};
    vectors()[0] = {2, 0, 0};
    vectors()[1] = {1, 0, 0};
    colors()[0] = {0.5F, 1, 0};
    colors()[1] = {1, 0, 1};
    look = {ParticleMode::SOLID_ARROWS, VELOCITY, ParticleQuantity::LENGTH, 0, 2,
            {{green, red}, white},      0.5F};
    for (unsigned int const color : {ParticleChannel_v2::NONE, COLOR}) {
        look.colorChannel = color;
        Picture const picture = drawOn(ROADS[0]);
        savePicture(color == COLOR ? "toolkit_solidArrows_colors" : "toolkit_solidArrows_map");
        int right[2] = {0, 0};
        int headRows[2] = {0, 0};
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (isLit(at(picture, x, y))) {
                    right[y / 128] = std::max(right[y / 128], x);
                }
            }
            // Behind the middle of the heads.
            headRows[y / 128] += isLit(at(picture, y < 128 ? 156 : 110, y)) ? 1 : 0;
        }
        EXPECT_NEAR(right[0], 64 + 128, 2);
        EXPECT_NEAR(right[1], 64 + 64, 2);
        // The head: a third of the length, 0.4 of that wide.
        EXPECT_NEAR(headRows[0], 128 / 3.0 * 0.4 * (192 - 156) / 42.6, 3);
        EXPECT_NEAR(headRows[1], 64 / 3.0 * 0.4 * (128 - 110) / 21.3, 3);
        expectColor(at(picture, 170, 64), color == COLOR ? Color4<float>{0.5F, 1, 0, 1} : red);
        expectColor(at(picture, 118, 192),
                    color == COLOR ? Color4<float>{1, 0, 1, 1} : Color4<float>{0.5F, 0.5F, 0, 1});
    }
}

TEST_F(ParticleRenderer_own_test, arrowsLieInTheirBoxAndReachItsEnds) {
    system.addParticles(1);
    look.channel = VELOCITY;
    look.size = 0.5F;
    for (ParticleMode const mode : {ParticleMode::ARROWS, ParticleMode::SOLID_ARROWS}) {
        for (Vector3<float> const& v : {Vector3<float>{1.5F, 0, 0}, {-1, 1, 0}, {0.3F, -1, 0.6F}}) {
            vectors()[0] = v;
            renderer.markChanged();
            look.mode = mode;
            clear();
            draw();
            Box3<double> box{{0, 0, 0}, {0, 0, 0}};
            includeArrow(box, mode, {0, 0, 0}, convert<double>(v) * static_cast<double>(look.size));
            Picture const picture = readPixels();
            Box3<double> seen{{9, 9, 0}, {-9, -9, 0}};
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    if (isLit(at(picture, x, y))) {
                        double const px = (x + 0.5 - 128) / 128;
                        double const py = (128 - y - 0.5) / 128;
                        seen = {{std::min(seen.min.x, px), std::min(seen.min.y, py), 0},
                                {std::max(seen.max.x, px), std::max(seen.max.y, py), 0}};
                    }
                }
            }
            constexpr double LINE = 0.015;  // its width
            constexpr double SLACK = 0.13;  // the ring is drawn as two or four of its points
            EXPECT_GE(seen.min.x, box.min.x - LINE);
            EXPECT_LE(seen.max.x, box.max.x + LINE);
            EXPECT_GE(seen.min.y, box.min.y - LINE);
            EXPECT_LE(seen.max.y, box.max.y + LINE);
            EXPECT_NEAR(seen.min.x, box.min.x, SLACK);
            EXPECT_NEAR(seen.max.x, box.max.x, SLACK);
            EXPECT_NEAR(seen.min.y, box.min.y, SLACK);
            EXPECT_NEAR(seen.max.y, box.max.y, SLACK);
        }
    }
}

TEST_F(ParticleRenderer_own_test, solidArrowsNeedNoGeometryStagesAndNoShaders) {
    addSquare(4, 1, 1);
    look = {ParticleMode::SOLID_ARROWS, VELOCITY, ParticleQuantity::LENGTH, 0, 2,
            {{green, red}, white},      0.2F};
    Picture const first = drawOn(ROADS[0]);
    EXPECT_GT(litPixels(first), 300);
    for (Road const& road : ROADS) {
        EXPECT_TRUE(drawOn(road) == first) << road.name;
    }
    gl_spy::Script driver;
    driver.string(VERSION, "2.1.0").string(EXTENSIONS, "GL_ARB_vertex_buffer_object");
    clear();
    EXPECT_EQ(draw().mode, ParticleMode::SOLID_ARROWS);
    EXPECT_TRUE(readPixels() == first);
}

TEST_F(ParticleRenderer_own_test, solidArrowsOfNoLengthAndNoNumbersAreLeftOut) {
    addSquare(4, 1, 1);
    vectors()[0] = {0, 0, 0};
    vectors()[1] = {notANumber, 0, 0};
    vectors()[2] = {0, infinite, 0};
    vectors()[3] = {1e-30F, 0, 0};
    positions()[4].z = notANumber;
    look = {ParticleMode::SOLID_ARROWS, VELOCITY, ParticleQuantity::LENGTH, 0, 2,
            {{green, red}, white},      0.1F};
    EXPECT_EQ(draw().count, 11U);
    Picture const picture = readPixels();
    for (int y = 193; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            EXPECT_FALSE(isLit(at(picture, x, y)) && y > 240) << x << " " << y;
        }
    }
    for (unsigned int k = 0; k < 16; ++k) {
        vectors()[k] = {0, 0, 0};
    }
    renderer.markChanged();
    ParticleDrawing const none = draw();
    EXPECT_EQ(none.path, ParticlePath::NONE);
    EXPECT_EQ(none.count, 0U);
}

TEST_F(ParticleRenderer_own_test, solidArrowsHaveABudgetThatIsSpreadEvenly) {
    constexpr unsigned int SIDE = 400;  // 160,000 particles
    addSquare(SIDE, 1, 1);
    look = {ParticleMode::SOLID_ARROWS, VELOCITY, ParticleQuantity::LENGTH, 0, 2,
            {{green, red}, white},      0.005F};
    EXPECT_EQ(draw().count, MOST_SOLID_ARROWS);
    Picture const picture = readPixels();
    for (int y = 8; y < 248; y += 16) {
        int lit = 0;
        for (int x = 0; x < 256; ++x) {
            lit += isLit(at(picture, x, y)) ? 1 : 0;
        }
        EXPECT_GT(lit, 60) << y;
    }
    look.percent = 25;
    EXPECT_EQ(draw().count, 40000U);
}

TEST_F(ParticleRenderer_own_test, solidArrowsWithoutVectorsAreSmallPoints) {
    addSquare(4, 0, 1);
    look.mode = ParticleMode::SOLID_ARROWS;
    look.size = 50;
    look.channel = ENERGY;
    EXPECT_EQ(draw().mode, ParticleMode::POINTS);
    EXPECT_EQ(litPixels(readPixels()), 16 * 4);
}

}  // namespace
}  // namespace vellum::toolkit
