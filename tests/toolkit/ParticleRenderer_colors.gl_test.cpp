#include "tests/toolkit/particle_drawing.h"

#include <cstdlib>

namespace vellum::toolkit {
namespace {

// == Colors ==

/// A look, for particles with values from `from` to `to`.
struct Colored {
    char const* name;
    unsigned int channel;
    ParticleQuantity quantity;
    double low;
    double high;
    ColorMap colors{};
    float from = -3;
    float to = 5;
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
    {"noChannel", ParticleChannel_v2::NONE, ParticleQuantity::LENGTH, 0, 1},
    {"length", VELOCITY, ParticleQuantity::LENGTH, 0, 4},
    {"lengthFromBelowZero", VELOCITY, ParticleQuantity::LENGTH, -2, 4},
    {"lengthFromAboveZero", VELOCITY, ParticleQuantity::LENGTH, 1, 4},
    {"hugeLength", VELOCITY, ParticleQuantity::LENGTH, 0, 4e25, {}, -3e25F, 5e25F},
    {"tinyLength", VELOCITY, ParticleQuantity::LENGTH, 0, 4e-25, {}, -3e-25F, 5e-25F},
    {"x", VELOCITY, ParticleQuantity::X, -1.5, 2},
    {"y", VELOCITY, ParticleQuantity::Y, -1.5, 2},
    {"z", VELOCITY, ParticleQuantity::Z, -1.5, 2},
    {"scalar", ENERGY, ParticleQuantity::LENGTH, -2, 4},
    {"smallScalar", ENERGY, ParticleQuantity::LENGTH, -0.2, 0.4, {}, -0.3F, 0.5F},
    {"scalarWithMap", ENERGY, ParticleQuantity::LENGTH, -2, 4, ColorMap::named("turbo")},
    {"lengthWithMap", VELOCITY, ParticleQuantity::LENGTH, 0, 4, {{blue, red, green}, white}},
    {"oneColor", ENERGY, ParticleQuantity::LENGTH, 0, 4, {{green}, white}},
    {"emptyRange", VELOCITY, ParticleQuantity::LENGTH, 2, 2}};

class ParticleRenderer_colored_test : public ParticleRenderer_gl_test,
                                      public testing::WithParamInterface<Colored> {};

TEST_P(ParticleRenderer_colored_test, allPathsShowTheColorsOfTheMap) {
    constexpr unsigned int SIDE = 16;
    Colored const& row = GetParam();
    addSquare(SIDE, row.from, row.to);
    look = {ParticleMode::POINTS, row.channel, row.quantity, row.low, row.high, row.colors, 9};
    Picture first;
    for (Road const& road : ROADS) {
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        if (first.empty()) {
            savePicture(std::string("toolkit_particles_") + row.name);
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

TEST_F(ParticleRenderer_gl_test, valuesThatAreNoNumbersHaveAColorOfTheirOwn) {
    addSquare(4, 0, 1);
    look.size = 9;
    look.channel = ENERGY;
    look.colors = {{blue, red}, green, white};
    system.firstChunk()->channelData(ENERGY)->asFloats()[5] = notANumber;
    system.firstChunk()->channelData(ENERGY)->asFloats()[6] = infinite;
    system.firstChunk()->channelData(ENERGY)->asFloats()[7] = -infinite;
    system.firstChunk()->channelData(VELOCITY)->asVectors()[5] = {notANumber, 0, 0};
    for (Road const& road : ROADS) {
        SCOPED_TRACE(road.name);
        Picture const picture = drawOn(road);
        expectColor(ofParticle(picture, 5, 4), white);
        expectColor(ofParticle(picture, 6, 4), green);
        expectColor(ofParticle(picture, 7, 4), blue);
    }
    look.channel = VELOCITY;
    look.quantity = ParticleQuantity::X;
    for (Road const& road : ROADS) {
        expectColor(ofParticle(drawOn(road), 5, 4), white);
    }
    look.colors.undefined = red;
    for (Road const& road : ROADS) {
        expectColor(ofParticle(drawOn(road), 5, 4), red);
    }
    // In a length with a map of three colors, and with sizes.
    look.quantity = ParticleQuantity::LENGTH;
    look.colors = {{blue, blue, red}, green, white};
    for (unsigned int const sizes : {ParticleChannel_v2::NONE, SIZE}) {
        look.sizeChannel = sizes;
        for (Road const& road : ROADS) {
            expectColor(ofParticle(drawOn(road), 5, 4), white);
        }
    }
    look.sizeChannel = ParticleChannel_v2::NONE;
    look.colors = {{blue, red}, green, white};
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

}  // namespace
}  // namespace vellum::toolkit
