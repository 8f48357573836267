#include "viewport/scene/ParticleLook.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;
using testing::HasSubstr;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

std::string faultOf(std::vector<ParticleFrame> const& frames, ParticleOptions const& options) {
    Result<ParticleLook> const result = lookOf(frames, options);
    EXPECT_FALSE(result.isOk());
    return result.fault().line();
}

}  // namespace

TEST(ParticleLook, nothingBecomesNothing) {
    ParticleLook const none = look({});
    EXPECT_TRUE(none.notes.empty());
    EXPECT_FALSE(none.scale.has_value());
}

// == Modes ==

TEST(ParticleLook, spheresAreDrawnWhereNothingIsAskedForAndPointsOfMany) {
    EXPECT_EQ(look({row(3)}).mode, ParticleMode::SPHERES);
    EXPECT_EQ(look({row(MOST_SPHERES)}).mode, ParticleMode::SPHERES);
    EXPECT_EQ(look({row(MOST_SPHERES), row(1)}).mode, ParticleMode::POINTS);
    EXPECT_EQ(look({row(3)}, mode(ParticleMode::POINTS)).mode, ParticleMode::POINTS);
}

TEST(ParticleLook, arrowsTakeVelocities) {
    EXPECT_THAT(faultOf({row(2)}, mode(ParticleMode::ARROWS)), HasSubstr("has no velocities"));
    ParticleLook const arrows = look({withVelocities({{0, 3, 4}, {1, 0, 0}})}, mode(ParticleMode::ARROWS));
    EXPECT_EQ(arrows.scale->name, "speed");
    EXPECT_EQ(arrows.scale->range.low, 1);
    EXPECT_EQ(arrows.scale->range.high, 5);
}

TEST(ParticleLook, arrowsAreColoredBySpeedAlone) {
    ParticleOptions options = channel("mass");
    options.mode = ParticleMode::ARROWS;
    ParticleFrame data = withVelocities({{1, 0, 0}});
    data.channels.push_back({"mass", {1}, {}});
    EXPECT_THAT(faultOf({data}, options), HasSubstr("colored by speed"));
    // A column of this name has nothing to do with how long the arrows are.
    data.channels.back() = {"speed", {77}, {}};
    options.channel = "speed";
    EXPECT_EQ(look({data}, options).scale->range.high, 1);
    EXPECT_EQ(look({data}, channel("speed")).scale->range.high, 77);
}

// == Channels ==

TEST(ParticleLook, speedIsShownWhereThereIsOneElseTheFirstColumnThatTellsSomething) {
    ParticleFrame data = withVelocities({{1, 0, 0}, {0, 0, 2}});
    std::vector<ParticleChannel> const more{{"id", {1, 2}, {}}, {"type", {1, 1}, {}}, {"c_pe", {3, 4}, {}}};
    data.channels.insert(data.channels.end(), more.begin(), more.end());
    EXPECT_EQ(look({data}).scale->name, "speed");
    data.vectors.clear();
    data.channels = more;
    EXPECT_EQ(look({data}).scale->name, "c_pe");
    data.channels.pop_back();
    EXPECT_EQ(look({data}).scale->name, "type");
    data.channels.pop_back();
    EXPECT_FALSE(look({data}).scale.has_value());
    EXPECT_EQ(look({data}, channel("id")).scale->name, "id");
}

TEST(ParticleLook, componentsOfTheVelocityAreChannelsWithASign) {
    Shown const result = shown(withVelocities({{1, -5, 0}, {2, 5, 0}, {3, 0, 0}}), channel("vy"));
    EXPECT_EQ(result.look.scale->range.low, -5);
    EXPECT_EQ(result.look.scale->range.high, 5);
    EXPECT_NEAR(result.rate(0), 0, 1e-4);
    EXPECT_NEAR(result.rate(1), 1, 1e-4);
    EXPECT_NEAR(result.rate(2), 0.5, 1e-4);
}

TEST(ParticleLook, anUnknownChannelIsAFaultThatNamesTheKnownOnes) {
    EXPECT_EQ(faultOf({withChannel("mass", {1, 2})}, channel("charge")),
              "folder/row.xyz: has no channel 'charge' (it has: mass)");
    EXPECT_THAT(faultOf({row(1)}, channel("vx")), HasSubstr("(it has: none)"));
}

TEST(ParticleLook, severalFilesShareARangeAndAChannelThatAllHave) {
    ParticleFrame first = withChannel("a", {0, 1});
    first.channels.push_back({"b", {5, 6}, {}});
    ParticleLook const result = look({first, withChannel("b", {-3, 2})});
    EXPECT_EQ(result.scale->name, "b");
    EXPECT_EQ(result.scale->range.low, -3);
    EXPECT_EQ(result.scale->range.high, 6);
    EXPECT_FALSE(look({withChannel("a", {0, 1}), withChannel("b", {0, 1})}).scale.has_value());
}

// == Ranges ==

TEST(ParticleLook, theRangeIsThatOfTheDataAndHoldsAllOfThem) {
    Shown const result = shown(withChannel("t", {300, 280, 320, 310}));
    EXPECT_EQ(result.look.scale->range.low, 280);
    EXPECT_EQ(result.look.scale->range.high, 320);
    EXPECT_FALSE(result.look.scale->isExceeded);
    EXPECT_NEAR(result.rate(0), 0.5, 1e-4);
    EXPECT_EQ(result.rate(1), 0);
    // Strictly below 1: from there on arrows would have the color of what is above the range.
    EXPECT_LT(result.rate(2), 1);
    EXPECT_GT(result.rate(2), 0.9999);
}

TEST(ParticleLook, aRangeThatIsGivenIsKeptAndValuesOutsideStayOutside) {
    ParticleOptions options;
    options.range = ValueRange{0, 10};
    Shown const result = shown(withChannel("t", {-5, 0, 10, 20}), options);
    EXPECT_TRUE(result.look.scale->isExceeded);
    EXPECT_NEAR(result.rate(0), -0.5, 1e-4);
    EXPECT_NEAR(result.rate(1), 0, 1e-6);
    EXPECT_NEAR(result.rate(2), 1, 1e-4);
    EXPECT_NEAR(result.rate(3), 2, 1e-4);
    options.range = ValueRange{-100, 100};
    EXPECT_FALSE(look({withChannel("t", {-5, 0, 10, 20})}, options).scale->isExceeded);
}

TEST(ParticleLook, equalValuesHaveTheLowColor) {
    Shown const result = shown(withChannel("t", {7, 7}));
    EXPECT_GT(result.look.scale->highMagnitude(), result.look.scale->lowMagnitude());
    EXPECT_EQ(result.rate(0), 0);
}

TEST(ParticleLook, rangesKeepTheirMeaningWhateverTheirUnits) {
    for (double const unit : {1e-30, 1e-12, 1.0, 1e12, 1e30}) {
        Shown const result = shown(withChannel("t", {-1 * unit, 0, 3 * unit}));
        EXPECT_NEAR(result.rate(1), 0.25, 1e-4) << unit;
        Shown const speeds = shown(withVelocities({{unit, 0, 0}, {0, 2 * unit, 0}, {0, 0, 3 * unit}}));
        EXPECT_NEAR(speeds.rate(1), 0.5, 1e-4) << unit;
    }
    Shown const far = shown(withChannel("t", {1e6, 1e6 + 1, 1e6 + 2}));
    EXPECT_NEAR(far.rate(1), 0.5, 1e-4);
}

// == What cannot be drawn ==

TEST(ParticleLook, particlesWithoutAPlaceAreLeftOutAndNoted) {
    ParticleFrame data = withChannel("t", {1, 2, 3, 900});
    data.positions[1].y = notANumber;
    data.positions[3].z = infinite;
    Shown const result = shown(data);
    ASSERT_EQ(result.count(), 2U);
    EXPECT_EQ(result.position(1).x, 2);
    EXPECT_EQ(result.look.scale->range.high, 3) << "what is not shown has no part in the range";
    ASSERT_EQ(result.look.notes.size(), 1U);
    EXPECT_EQ(result.look.notes.front().line(),
              "folder/row.xyz: 2 of 4 particles are left out: their positions are not finite");
}

TEST(ParticleLook, valuesThatAreNoNumbersAreAboveTheRange) {
    Shown const result = shown(withChannel("t", {notANumber, 1, infinite, -infinite, 2}));
    EXPECT_EQ(result.look.scale->range.low, 1);
    EXPECT_EQ(result.look.scale->range.high, 2);
    EXPECT_TRUE(result.look.scale->isExceeded);
    EXPECT_GT(result.rate(0), 1);
    EXPECT_GT(result.rate(2), 1);
    EXPECT_LE(result.rate(3), 0);
    for (std::size_t i = 0; i < result.count(); ++i) {
        EXPECT_TRUE(std::isfinite(result.vector(i).x * result.vector(i).x)) << "its length must be a number";
    }
    EXPECT_TRUE(look({withChannel("t", {notANumber, notANumber})}).scale->isExceeded);
}

TEST(ParticleLook, arrowsWithoutADirectionAreLeftOut) {
    std::vector<Vector3<double>> const velocities{{notANumber, 0, 0}, {1, 0, 0}, {infinite, 0, 0}};
    Shown const arrows = shown(withVelocities(velocities), mode(ParticleMode::ARROWS));
    EXPECT_EQ(arrows.count(), 1U);
    EXPECT_THAT(arrows.look.notes.front().line(), HasSubstr("positions or velocities"));
    Shown const spheres = shown(withVelocities(velocities));
    EXPECT_EQ(spheres.count(), 3U);
    EXPECT_GT(spheres.rate(0), 1);
    EXPECT_TRUE(spheres.look.notes.empty());
}
