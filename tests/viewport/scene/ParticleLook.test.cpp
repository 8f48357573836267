#include "viewport/scene/ParticleLook.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace vellum;
using namespace vellum::viewport;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();

/// Particles at 0, 1, 2, ... on the x axis.
ParticleData row(std::size_t const& count) {
    ParticleData data;
    data.file = "folder/row.xyz";
    for (std::size_t i = 0; i < count; ++i) {
        data.frame.positions.push_back({static_cast<float>(i), 0, 0});
    }
    return data;
}

ParticleData withChannel(std::string const& name, std::vector<float> const& values) {
    ParticleData data = row(values.size());
    data.frame.channels.push_back({name, values});
    return data;
}

ParticleData withVelocities(std::vector<Vector3<float>> const& velocities) {
    ParticleData data = row(velocities.size());
    data.frame.velocities = velocities;
    return data;
}

ParticleLook look(std::vector<ParticleData> data, ParticleOptions const& options = {}) {
    Result<ParticleLook> result = lookOf(std::move(data), options);
    EXPECT_TRUE(result.isOk()) << result.fault().line();
    return result.isOk() ? result.value() : ParticleLook{};
}

std::string faultOf(std::vector<ParticleData> data, ParticleOptions const& options) {
    Result<ParticleLook> const result = lookOf(std::move(data), options);
    EXPECT_FALSE(result.isOk());
    return result.fault().line();
}

ParticleOptions channel(std::string const& name) {
    ParticleOptions options;
    options.channel = name;
    return options;
}

ParticleOptions mode(ParticleMode const& value) {
    ParticleOptions options;
    options.mode = value;
    return options;
}

/// Where in the range the renderer sees the particle: 0 at its low end, 1 at its high end.
double rateOf(ParticleLook const& look, std::size_t const& index) {
    Vector3<float> const& v = look.sets.front().colors[index];
    return (std::hypot(v.x, v.y, v.z) - look.scale->lowMagnitude()) /
           (look.scale->highMagnitude() - look.scale->lowMagnitude());
}

}  // namespace

TEST(ParticleLook, nothingBecomesNothing) {
    ParticleLook const none = look({});
    EXPECT_TRUE(none.sets.empty());
    EXPECT_FALSE(none.scale.has_value());
}

TEST(ParticleLook, theFileNameIsShownWithoutItsFolder) {
    EXPECT_EQ(look({row(2)}).sets.front().name, "row.xyz");
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
    ParticleData data = withVelocities({{1, 0, 0}});
    data.frame.channels.push_back({"mass", {1}});
    EXPECT_THAT(faultOf({data}, options), HasSubstr("colored by speed"));
    // A column of this name has nothing to do with how long the arrows are.
    data.frame.channels.front() = {"speed", {77}};
    options.channel = "speed";
    EXPECT_EQ(look({data}, options).scale->range.high, 1);
    EXPECT_EQ(look({data}, channel("speed")).scale->range.high, 77);
}

// == Channels ==

TEST(ParticleLook, speedIsShownWhereThereIsOneElseTheFirstColumnThatTellsSomething) {
    ParticleData data = withVelocities({{1, 0, 0}, {0, 0, 2}});
    data.frame.channels = {{"id", {1, 2}}, {"type", {1, 1}}, {"c_pe", {3, 4}}};
    EXPECT_EQ(look({data}).scale->name, "speed");
    data.frame.velocities.clear();
    EXPECT_EQ(look({data}).scale->name, "c_pe");
    data.frame.channels.pop_back();
    EXPECT_EQ(look({data}).scale->name, "type");
    data.frame.channels.pop_back();
    EXPECT_FALSE(look({data}).scale.has_value());
    EXPECT_EQ(look({data}, channel("id")).scale->name, "id");
}

TEST(ParticleLook, componentsOfTheVelocityAreChannelsWithASign) {
    ParticleLook const result = look({withVelocities({{1, -5, 0}, {2, 5, 0}, {3, 0, 0}})}, channel("vy"));
    EXPECT_EQ(result.scale->range.low, -5);
    EXPECT_EQ(result.scale->range.high, 5);
    EXPECT_NEAR(rateOf(result, 0), 0, 1e-4);
    EXPECT_NEAR(rateOf(result, 1), 1, 1e-4);
    EXPECT_NEAR(rateOf(result, 2), 0.5, 1e-4);
}

TEST(ParticleLook, anUnknownChannelIsAFaultThatNamesTheKnownOnes) {
    EXPECT_EQ(faultOf({withChannel("mass", {1, 2})}, channel("charge")),
              "folder/row.xyz: has no channel 'charge' (it has: mass)");
    EXPECT_THAT(faultOf({row(1)}, channel("vx")), HasSubstr("(it has: none)"));
}

TEST(ParticleLook, severalFilesShareARangeAndAChannelThatAllHave) {
    ParticleData first = withChannel("a", {0, 1});
    first.frame.channels.push_back({"b", {5, 6}});
    ParticleLook const result = look({first, withChannel("b", {-3, 2})});
    EXPECT_EQ(result.scale->name, "b");
    EXPECT_EQ(result.scale->range.low, -3);
    EXPECT_EQ(result.scale->range.high, 6);
    EXPECT_EQ(result.sets.size(), 2U);
    EXPECT_FALSE(look({withChannel("a", {0, 1}), withChannel("b", {0, 1})}).scale.has_value());
}

// == Ranges ==

TEST(ParticleLook, theRangeIsThatOfTheDataAndHoldsAllOfThem) {
    ParticleLook const result = look({withChannel("t", {300, 280, 320, 310})});
    EXPECT_EQ(result.scale->range.low, 280);
    EXPECT_EQ(result.scale->range.high, 320);
    EXPECT_FALSE(result.scale->isExceeded);
    EXPECT_NEAR(rateOf(result, 0), 0.5, 1e-4);
    EXPECT_EQ(rateOf(result, 1), 0);
    // Strictly below 1: from there on arrows would have the color of what is above the range.
    EXPECT_LT(rateOf(result, 2), 1);
    EXPECT_GT(rateOf(result, 2), 0.9999);
}

TEST(ParticleLook, aRangeThatIsGivenIsKeptAndValuesOutsideStayOutside) {
    ParticleOptions options;
    options.range = ValueRange{0, 10};
    ParticleLook const result = look({withChannel("t", {-5, 0, 10, 20})}, options);
    EXPECT_TRUE(result.scale->isExceeded);
    EXPECT_NEAR(rateOf(result, 0), -0.5, 1e-4);
    EXPECT_NEAR(rateOf(result, 1), 0, 1e-6);
    EXPECT_NEAR(rateOf(result, 2), 1, 1e-4);
    EXPECT_NEAR(rateOf(result, 3), 2, 1e-4);
    options.range = ValueRange{-100, 100};
    EXPECT_FALSE(look({withChannel("t", {-5, 0, 10, 20})}, options).scale->isExceeded);
}

TEST(ParticleLook, equalValuesHaveTheLowColor) {
    ParticleLook const result = look({withChannel("t", {7, 7})});
    EXPECT_GT(result.scale->highMagnitude(), result.scale->lowMagnitude());
    EXPECT_EQ(rateOf(result, 0), 0);
}

TEST(ParticleLook, rangesKeepTheirMeaningWhateverTheirUnits) {
    for (float const unit : {1e-30F, 1e-12F, 1.0F, 1e12F, 1e30F}) {
        ParticleLook const result = look({withChannel("t", {-1 * unit, 0, 3 * unit})});
        EXPECT_NEAR(rateOf(result, 1), 0.25, 1e-4) << unit;
        ParticleLook const speeds =
            look({withVelocities({{unit, 0, 0}, {0, 2 * unit, 0}, {0, 0, 3 * unit}})});
        EXPECT_NEAR(rateOf(speeds, 1), 0.5, 1e-4) << unit;
    }
    ParticleLook const far = look({withChannel("t", {1e6F, 1e6F + 1, 1e6F + 2})});
    EXPECT_NEAR(rateOf(far, 1), 0.5, 1e-4);
}

// == What cannot be drawn ==

TEST(ParticleLook, particlesWithoutAPlaceAreLeftOutAndNoted) {
    ParticleData data = withChannel("t", {1, 2, 3, 900});
    data.frame.positions[1].y = notANumber;
    data.frame.positions[3].z = infinite;
    ParticleLook const result = look({data});
    ASSERT_EQ(result.sets.front().positions.size(), 2U);
    EXPECT_EQ(result.sets.front().colors.size(), 2U);
    EXPECT_EQ(result.sets.front().positions[1].x, 2);
    EXPECT_EQ(result.scale->range.high, 3) << "what is not shown has no part in the range";
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_EQ(result.notes.front().line(),
              "folder/row.xyz: 2 of 4 particles are left out: their positions are not finite");
}

TEST(ParticleLook, valuesThatAreNoNumbersAreAboveTheRange) {
    ParticleLook const result = look({withChannel("t", {notANumber, 1, infinite, -infinite, 2})});
    EXPECT_EQ(result.scale->range.low, 1);
    EXPECT_EQ(result.scale->range.high, 2);
    EXPECT_TRUE(result.scale->isExceeded);
    EXPECT_GT(rateOf(result, 0), 1);
    EXPECT_GT(rateOf(result, 2), 1);
    EXPECT_LE(rateOf(result, 3), 0);
    for (Vector3<float> const& color : result.sets.front().colors) {
        EXPECT_TRUE(std::isfinite(color.x * color.x)) << "its length must be a number";
    }
    EXPECT_TRUE(look({withChannel("t", {notANumber, notANumber})}).scale->isExceeded);
}

TEST(ParticleLook, arrowsWithoutADirectionAreLeftOut) {
    std::vector<Vector3<float>> const velocities{{notANumber, 0, 0}, {1, 0, 0}, {infinite, 0, 0}};
    ParticleLook const arrows = look({withVelocities(velocities)}, mode(ParticleMode::ARROWS));
    EXPECT_EQ(arrows.sets.front().positions.size(), 1U);
    EXPECT_THAT(arrows.notes.front().line(), HasSubstr("positions or velocities"));
    ParticleLook const spheres = look({withVelocities(velocities)});
    EXPECT_EQ(spheres.sets.front().positions.size(), 3U);
    EXPECT_GT(rateOf(spheres, 0), 1);
    EXPECT_TRUE(spheres.notes.empty());
}

TEST(ParticleLook, aBoxThatIsNotFiniteIsNotShown) {
    ParticleData data = row(2);
    data.frame.box = ParticleBox{};
    EXPECT_TRUE(look({data}).sets.front().box.has_value());
    data.frame.box->edges[1].y = static_cast<double>(infinite);
    EXPECT_FALSE(look({data}).sets.front().box.has_value());
}

// == Sizes ==

TEST(ParticleLook, spheresOfALatticeAlmostTouch) {
    for (unsigned int const dimensions : {1U, 2U, 3U}) {
        ParticleData data = row(0);
        unsigned int const count = dimensions == 1 ? 5 : dimensions == 2 ? 25 : 125;
        for (unsigned int i = 0; i < count; ++i) {
            data.frame.positions.push_back({static_cast<float>(i % 5 * 3), static_cast<float>(i / 5 % 5 * 3),
                                            static_cast<float>(i / 25 * 3)});
        }
        ParticleLook const result = look({data});
        EXPECT_NEAR(result.sets.front().spacing, 3, 1e-6) << dimensions;
        EXPECT_NEAR(result.sets.front().diameter, 2.94, 1e-6);
        EXPECT_NEAR(result.sets.front().reach, 1.47, 1e-6);
    }
    EXPECT_EQ(look({row(1)}).sets.front().spacing, 1);
    EXPECT_EQ(look({row(0)}).sets.front().spacing, 1);
}

TEST(ParticleLook, theSizeOfSpheresCanBeGiven) {
    ParticleOptions options;
    options.size = 0.25;
    EXPECT_EQ(look({row(3)}, options).sets.front().diameter, 0.25);
    options.mode = ParticleMode::POINTS;
    EXPECT_EQ(look({row(3)}, options).sets.front().reach, 0) << "pixels are no units of the file";
}

// == Thinning ==

TEST(ParticleLook, thinnedParticlesHaveNoOrderAndKeepTheirValues) {
    std::vector<float> values;
    for (int i = 0; i < 1000; ++i) {
        values.push_back(static_cast<float>(i));
    }
    ParticleOptions options;
    EXPECT_EQ(look({withChannel("t", values)}, options).sets.front().positions[1].x, 1);
    options.percent = 10;
    ParticleLook const one = look({withChannel("t", values)}, options);
    ParticleLook const other = look({withChannel("t", values)}, options);
    int inPlace = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        float const x = one.sets.front().positions[i].x;
        inPlace += x == static_cast<float>(i) ? 1 : 0;
        EXPECT_EQ(x, other.sets.front().positions[i].x);
        EXPECT_NEAR(rateOf(one, i) * 999, x, 0.1) << "the value stays with its particle";
    }
    EXPECT_LT(inPlace, 20);
}
