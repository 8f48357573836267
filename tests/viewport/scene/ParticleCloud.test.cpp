#include "viewport/scene/ParticleCloud.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

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

TEST(ParticleCloud, sizesOfTheFileAreThoseOfSpheres) {
    ParticleFrame data = row(4);
    data.channels.push_back({"radius", {0.5, 2, 0, std::nan("")}, {}});
    data.sizes = ParticleSizes{0, 2};
    Shown const result = shown(data);
    ASSERT_TRUE(result.cloud.sizes);
    EXPECT_EQ(result.size(0), 1);
    EXPECT_EQ(result.size(1), 4);
    EXPECT_FLOAT_EQ(static_cast<float>(result.size(2)), 0.98F);
    EXPECT_FLOAT_EQ(static_cast<float>(result.size(3)), 0.98F);
    EXPECT_EQ(result.cloud.box.min.x, -1) << "of the second";
    EXPECT_EQ(result.cloud.box.max.y, 2);
    ASSERT_EQ(result.look.notes.size(), 1U);
    EXPECT_EQ(result.look.notes.front().line(), "folder/row.xyz: 2 of 4 values of 'radius' are no sizes "
                                                "above 0: these particles have the usual size");

    ParticleOptions options;
    options.size = 0.25;
    Shown const given = shown(data, options);
    EXPECT_FALSE(given.cloud.sizes) << "what is asked for replaces them";
    EXPECT_TRUE(given.look.notes.empty());
    EXPECT_FALSE(shown(data, mode(ParticleMode::POINTS)).cloud.sizes) << "points are in pixels";
}

TEST(ParticleCloud, elementsHaveTheSizesOfTheirCovalentRadii) {
    ParticleFrame data = row(3);
    data.labels.push_back({"element", {"C", "H", "Q"}, {0, 1, 2}, true});
    Shown const result = shown(data);
    ASSERT_TRUE(result.cloud.sizes);
    EXPECT_FLOAT_EQ(static_cast<float>(result.size(0)), 1.52F);
    EXPECT_FLOAT_EQ(static_cast<float>(result.size(1)), 0.62F);
    EXPECT_FLOAT_EQ(static_cast<float>(result.size(2)), 0.98F) << "the usual size";
    EXPECT_TRUE(result.look.notes.empty());
}

TEST(ParticleCloud, whereLengthsAreNotInAngstromElementsKeepTheirRelativeSizes) {
    for (double const unit : {1e-10, 0.1, 1e4}) {
        ParticleFrame data = row(3);
        data.labels.push_back({"element", {"C", "H", "Q"}, {0, 1, 2}, true});
        for (Vector3<double>& p : data.positions) {
            p.x *= unit;
        }
        Shown const result = shown(data);
        EXPECT_NEAR(result.size(0), 0.98 * unit, 1e-6 * unit) << "the largest has the usual size";
        EXPECT_NEAR(result.size(1), 0.98 * unit * 0.31 / 0.76, 1e-6 * unit);
        ASSERT_EQ(result.look.notes.size(), 1U) << unit;
        EXPECT_NE(result.look.notes.front().line().find("angstrom"), std::string::npos);
    }
}

// == Far away ==

TEST(ParticleCloud, farFromTheOriginParticlesKeepTheirDistances) {
    ParticleFrame data = row(2);
    data.positions = {{1e12, 0, -1e12}, {1e12 + 1, 0.5, -1e12}};
    data.box = ParticleBox{{1e12, 0, -1e12}, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    ParticleLook const appearance = look({data});
    ParticleCloud const cloud = CloudMaker(data, appearance).make({{1e12, 0, -1e12}, 10, Turn()});
    Vector3<float> const* const places = cloud.system->firstChunk()->channelData(0)->asVectors();
    EXPECT_EQ(parts(places[1]), (Parts{10, 5, 0}));
    EXPECT_EQ(parts(places[0]), (Parts{0, 0, 0}));
    EXPECT_NEAR(cloud.spacing, 10 * std::sqrt(0.5), 1e-6) << "of two dimensions";
    float largest = 0;
    for (Vector3<float> const& end : cloud.boxLines) {
        largest = std::max({largest, end.x, end.y, end.z});
    }
    EXPECT_EQ(largest, 10);
    EXPECT_TRUE(appearance.notes.empty());
}

// == Placement ==

TEST(ParticleCloud, allDirectionsOfACloudAreTurnedWithIt) {
    ParticleFrame data = withVelocities({{0, 0, 4}, {1, 2, 3}});
    data.positions[1] = {1, 2, 3};
    data.box = ParticleBox{{0, 0, 0}, {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}};
    ParticleOptions options = mode(ParticleMode::ARROWS);
    ParticleLook const appearance = look({data}, options);
    CloudMaker const maker(data, appearance);
    Shown const upright{appearance, maker.make({})};
    Placement const placement{{1, 0, 0}, 2, Turn(UpAxis::Z)};
    Shown const turned{appearance, maker.make(placement)};

    EXPECT_EQ(parts(turned.position(1)), (Parts{0, 6, -4}));
    EXPECT_EQ(parts(turned.vector(0)), (Parts{0, 1, 0})) << "directions are neither moved nor scaled";
    Vector3<float> const along = upright.vector(1);
    EXPECT_EQ(parts(turned.vector(1)), (Parts{along.x, along.z, -along.y}));
    ASSERT_EQ(turned.cloud.boxLines.size(), 24U);
    for (std::size_t i = 0; i < 24; ++i) {
        Vector3<float> const end = upright.cloud.boxLines[i];
        EXPECT_EQ(parts(turned.cloud.boxLines[i]), (Parts{2 * (end.x - 1), 2 * end.z, -2 * end.y})) << i;
    }
    Box3<double> const box = maker.box();
    EXPECT_EQ(turned.cloud.box.min.x, 2 * (box.min.x - 1));
    EXPECT_EQ(turned.cloud.box.min.z, -2 * box.max.y);
    EXPECT_EQ(turned.cloud.box.max.z, -2 * box.min.y);
}

// == Cells ==

namespace {

/// A box whose second edge leans, with particles outside it.
ParticleFrame tilted() {
    ParticleFrame data = row(0);
    data.box = ParticleBox{{1, 0, 0}, {{4, 0, 0}, {2, 3, 0}, {0, 0, 5}}};
    data.positions = {{2, 1, 1}, {6, 1, 1}, {2, -2, 1}, {1, 0, -1}};
    return data;
}

}  // namespace

TEST(ParticleCloud, particlesAreMovedIntoTheirPeriodicBox) {
    ParticleOptions options;
    EXPECT_EQ(parts(shown(tilted(), options).position(1)), (Parts{6, 1, 1}));
    options.isWrapped = true;
    Shown const result = shown(tilted(), options);
    EXPECT_EQ(parts(result.position(0)), (Parts{2, 1, 1}));
    EXPECT_EQ(parts(result.position(1)), (Parts{2, 1, 1}));
    EXPECT_EQ(parts(result.position(2)), (Parts{4, 1, 1})) << "along the leaning edge";
    EXPECT_EQ(parts(result.position(3)), (Parts{1, 0, 4}));

    ParticleFrame open = tilted();
    open.box->isPeriodic = {true, true, false};
    EXPECT_EQ(parts(shown(open, options).position(3)), (Parts{1, 0, -1})) << "not along open edges";
    ParticleFrame flat = tilted();
    flat.box->edges[2] = {0, 0, 0};
    EXPECT_EQ(parts(shown(flat, options).position(1)), (Parts{2, 1, 1}));

    for (ParticleBox const& bad : {ParticleBox{}, ParticleBox{{0, 0, 0}, {{1, 0, 0}, {2, 0, 0}, {0, 0, 1}}},
                                   ParticleBox{{0, 0, 0}, {{infinite, 0, 0}, {0, 1, 0}, {0, 0, 1}}}}) {
        ParticleFrame data = tilted();
        data.box = bad;
        EXPECT_FALSE(lookOf({data}, options).isOk());
    }
    EXPECT_FALSE(lookOf({row(2)}, options).isOk()) << "no box";
}

TEST(ParticleCloud, particlesAndTheirBoxAreRepeatedAlongItsEdges) {
    ParticleOptions options = channel("x");
    options.copies = {2, 3, 1};
    options.isWrapped = true;
    Shown const result = shown(tilted(), options);
    ASSERT_EQ(result.count(), 24U);
    EXPECT_EQ(parts(result.position(0)), (Parts{2, 1, 1}));
    EXPECT_EQ(parts(result.position(4)), (Parts{6, 1, 1}));
    EXPECT_EQ(parts(result.position(8)), (Parts{4, 4, 1}));
    EXPECT_EQ(parts(result.position(23)), (Parts{1 + 4 + 2 * 2, 6, 4}));
    EXPECT_EQ(result.vector(12).x, result.vector(0).x) << "copies have the values of their particles";
    // Lines along one edge at each corner of the others: 4 * 2, 3 * 2 and 3 * 4.
    EXPECT_EQ(result.cloud.boxLines.size(), 2U * (8 + 6 + 12));
    EXPECT_EQ(result.cloud.box.max.x, 1 + 2 * 4 + 3 * 2);
    EXPECT_EQ(result.cloud.box.max.y, 9);
    EXPECT_EQ(result.look.choices[0].count, 4U);
}

TEST(ParticleCloud, copiesBeyondAllMeasureAreRefused) {
    ParticleOptions options;
    options.copies = {100'000, 100'000, 100'000};
    Result<ParticleLook> const many = lookOf({tilted()}, options);
    ASSERT_FALSE(many.isOk());
    EXPECT_NE(many.fault().line().find("more particles than can be drawn (2147483647)"), std::string::npos);
    options.copies = {1001, 1000, 1};
    Result<ParticleLook> const boxes = lookOf({tilted()}, options);
    ASSERT_FALSE(boxes.isOk());
    EXPECT_NE(boxes.fault().line().find("more copies of its box than can be drawn (1000000)"),
              std::string::npos);
    options.copies = {2, 1, 1};
    EXPECT_FALSE(lookOf({row(2)}, options).isOk()) << "no box";
}

// == Arrows ==

TEST(ParticleCloud, arrowsAreFramedAsLongAsTheyAre) {
    ParticleOptions options = mode(ParticleMode::ARROWS);
    ParticleFrame const data = withVelocities({{0, 0, 0}, {0, 3, 0}, {-2, 0, 0}});
    options.size = 2;
    Shown const given = shown(data, options);
    EXPECT_EQ(given.cloud.arrowLength, 6) << "of the longest, which is handed over as 1";
    EXPECT_NEAR(given.cloud.box.max.y, 6, 1e-9);
    EXPECT_NEAR(given.cloud.box.min.x, -2, 1e-9);
    EXPECT_NEAR(given.cloud.box.max.x, 2.4, 0.1) << "its head is wide";

    options.size.reset();
    Shown const chosen = shown(data, options);
    EXPECT_NEAR(chosen.cloud.arrowLength, 1.9, 1e-9) << "spacings";
    EXPECT_NEAR(chosen.cloud.box.max.y, 1.9, 1e-9);
    options.percent = 12.5F;
    EXPECT_NEAR(shown(data, options).cloud.arrowLength, 3.8, 1e-6) << "the others leave room";
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

namespace {

/// The places in the frame of the particles that the records show, in the order of the records.
void expectRecordsAreWhatIsDrawn(ParticleFrame const& frame, ParticleOptions const& options,
                                 std::string const& what) {
    Shown const result = shown(frame, options);
    CloudRecords const records = CloudMaker(frame, result.look).records();
    ASSERT_GT(result.count(), 0U) << what;
    for (std::size_t i = 0; i < result.count(); ++i) {
        EXPECT_EQ(parts(result.position(i)), parts(convert<float>(records.place(frame, i))))
            << what << ", record " << i;
        Vector3<double> const difference = records.place(frame, i) - frame.positions[records.particle(i)];
        EXPECT_EQ(std::remainder(difference.x, 4), 0) << what << ", record " << i;
        EXPECT_EQ(difference.y, 0) << what << ", record " << i;
    }
}

}  // namespace

TEST(ParticleCloud, recordsKnowTheirParticlesWhateverIsShown) {
    ParticleFrame frame = row(12);
    frame.positions[3].x = infinite;
    frame.box = ParticleBox{{0, 0, 0}, {{4, 0, 0}, {0, 4, 0}, {0, 0, 4}}};
    ParticleOptions options;
    expectRecordsAreWhatIsDrawn(frame, options, "all that have a place");
    options.isWrapped = true;
    expectRecordsAreWhatIsDrawn(frame, options, "wrapped");
    options.copies = {3, 1, 1};
    expectRecordsAreWhatIsDrawn(frame, options, "replicated");
    options.selection = "x > 1";
    expectRecordsAreWhatIsDrawn(frame, options, "selected");
    options.percent = 50;
    expectRecordsAreWhatIsDrawn(frame, options, "thinned");
}

TEST(ParticleCloud, recordsOfAllParticlesTakeNoMemory) {
    ParticleFrame const frame = row(5);
    ParticleLook const appearance = look({frame});
    CloudRecords const records = CloudMaker(frame, appearance).records();
    EXPECT_EQ(records.particles, nullptr);
    EXPECT_EQ(records.particle(4), 4U);
}
