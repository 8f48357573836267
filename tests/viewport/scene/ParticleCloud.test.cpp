#include "viewport/scene/ParticleCloud.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

}  // namespace

TEST(ParticleCloud, theFileNameIsShownWithoutItsFolder) {
    EXPECT_EQ(shown(row(2)).cloud.name, "row.xyz");
    ParticleFrame frame = row(1);
    frame.file = "row.xyz";
    EXPECT_EQ(shown(frame).cloud.name, "row.xyz");
}

TEST(ParticleCloud, withoutValuesNothingIsShown) {
    Shown const result = shown(row(2));
    EXPECT_FALSE(result.look.scale.has_value());
    EXPECT_EQ(result.vector(1).x, 0);
}

TEST(ParticleCloud, speedsAreShownAsVelocitiesInUnitsOfTheScale) {
    Shown const result = shown(withVelocities({{0, 3, 4}, {1, 0, 0}}), mode(ParticleMode::ARROWS));
    EXPECT_FLOAT_EQ(result.vector(0).y, 0.6F);
    EXPECT_FLOAT_EQ(result.vector(0).z, 0.8F);
    EXPECT_FLOAT_EQ(result.vector(1).x, 0.2F);
}

TEST(ParticleCloud, aBoxThatIsNotFiniteIsNotShown) {
    ParticleFrame data = row(2);
    data.box = ParticleBox{};
    EXPECT_TRUE(shown(data).cloud.boxLines.size() == 24);
    data.box->edges[1].y = infinite;
    EXPECT_FALSE(shown(data).cloud.boxLines.size() == 24);
}

// == Sizes ==

TEST(ParticleCloud, spheresOfALatticeAlmostTouch) {
    for (unsigned int const dimensions : {1U, 2U, 3U}) {
        ParticleFrame data = row(0);
        unsigned int const count = dimensions == 1 ? 5 : dimensions == 2 ? 25 : 125;
        for (unsigned int i = 0; i < count; ++i) {
            data.positions.push_back({static_cast<double>(i % 5 * 3), static_cast<double>(i / 5 % 5 * 3),
                                      static_cast<double>(i / 25 * 3)});
        }
        Shown const result = shown(data);
        EXPECT_NEAR(result.cloud.spacing, 3, 1e-6) << dimensions;
        EXPECT_NEAR(result.cloud.diameter, 2.94, 1e-6);
        EXPECT_NEAR(result.cloud.box.min.x, -1.47, 1e-6);
    }
    EXPECT_EQ(shown(row(1)).cloud.spacing, 1);
    EXPECT_EQ(shown(row(0)).cloud.spacing, 1);
}

TEST(ParticleCloud, theSizeOfSpheresCanBeGiven) {
    ParticleOptions options;
    options.size = 0.25;
    EXPECT_EQ(shown(row(3), options).cloud.diameter, 0.25);
    options.mode = ParticleMode::POINTS;
    EXPECT_EQ(shown(row(3), options).cloud.box.min.x, 0) << "pixels are no units of the file";
}

// == Thinning ==

TEST(ParticleCloud, thinnedParticlesHaveNoOrderAndKeepTheirValues) {
    std::vector<double> values;
    for (int i = 0; i < 1000; ++i) {
        values.push_back(i);
    }
    ParticleOptions options;
    EXPECT_EQ(shown(withChannel("t", values), options).position(1).x, 1);
    options.percent = 10;
    Shown const one = shown(withChannel("t", values), options);
    Shown const other = shown(withChannel("t", values), options);
    int inPlace = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        float const x = one.position(i).x;
        inPlace += x == static_cast<float>(i) ? 1 : 0;
        EXPECT_EQ(x, other.position(i).x);
        EXPECT_NEAR(one.rate(i) * 999, x, 0.1) << "the value stays with its particle";
    }
    EXPECT_LT(inPlace, 20);
}

TEST(ParticleCloud, whatIsLeftOutIsLeftOutOfAThinnedCloudToo) {
    ParticleFrame frame = withChannel("t", {0, 1, 2, 3, 4, 5, 6, 7});
    frame.positions[3].x = std::numeric_limits<double>::quiet_NaN();
    ParticleOptions options;
    options.percent = 50;
    Shown const result = shown(frame, options);
    ASSERT_EQ(result.count(), 7U);
    float sum = 0;
    for (std::size_t i = 0; i < result.count(); ++i) {
        sum += result.position(i).x;
    }
    EXPECT_EQ(sum, 25);
}
