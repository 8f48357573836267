#include "viewport/scene/ParticleLook.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;
using testing::HasSubstr;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infiniteValue = std::numeric_limits<double>::infinity();

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

TEST(ParticleLook, arrowsMayLieAlongAnyVectorAndShowAnyChannel) {
    ParticleFrame data = withVelocities({{1, 0, 0}, {0, 2, 0}});
    data.channels.push_back({"mass", {5, 7}, {}});
    data.channels.push_back({"fx", {0, 3}, {}});
    data.channels.push_back({"fy", {8, 0}, {}});
    data.channels.push_back({"fz", {0, 4}, {}});
    data.vectors.push_back({"f", {4, 5, 6}});
    ParticleOptions options = channel("f");
    options.mode = ParticleMode::ARROWS;
    Shown const forces = shown(data, options);
    EXPECT_EQ(forces.look.scale->name, "f");
    EXPECT_EQ(forces.look.scale->range.high, 8);
    EXPECT_FLOAT_EQ(forces.vector(1).x, 3 / 8.0F);
    EXPECT_FALSE(forces.cloud.colors) << "their lengths are what colors show";

    options.channel = "mass";
    Shown const masses = shown(data, options);
    EXPECT_EQ(masses.look.scale->range.high, 7);
    EXPECT_EQ(masses.look.arrowUnit, 2);
    EXPECT_FLOAT_EQ(masses.vector(0).x, 0.5F) << "along the velocities";
    ASSERT_TRUE(masses.cloud.colors);
    EXPECT_EQ(masses.color(1), parts(RampColors().high));

    // A column of this name has nothing to do with how long the arrows are.
    data.channels[3] = {"speed", {77, 77}, {}};
    options.channel = "speed";
    EXPECT_EQ(look({data}, options).scale->range.high, 2);
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
    EXPECT_EQ(look({data}).legend->title, "type");
    data.channels.pop_back();
    EXPECT_FALSE(look({data}).scale.has_value());
    EXPECT_FALSE(look({data}).legend.has_value());
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
              "folder/row.xyz: has no channel 'charge' (it has: mass, x, y, z)");
    ParticleFrame data = withVelocities({{1, 2, 3}});
    data.labels.push_back({"species", {"A"}, {0}});
    EXPECT_THAT(faultOf({data}, channel("q")), HasSubstr("(it has: speed, species, vx, vy, vz, x, y, z)"));
    EXPECT_THAT(faultOf({row(1)}, channel("vx")), HasSubstr("has no channel 'vx'"));
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

// == Particles without a place ==

TEST(ParticleLook, particlesWithoutAPlaceAreLeftOutAndNoted) {
    ParticleFrame data = withChannel("t", {1, 2, 3, 900});
    data.positions[1].y = notANumber;
    data.positions[3].z = infiniteValue;
    Shown const result = shown(data);
    ASSERT_EQ(result.count(), 2U);
    EXPECT_EQ(result.position(1).x, 2);
    EXPECT_EQ(result.look.scale->range.high, 3) << "what is not shown has no part in the range";
    ASSERT_EQ(result.look.notes.size(), 1U);
    EXPECT_EQ(result.look.notes.front().line(),
              "folder/row.xyz: 2 of 4 particles are left out: their positions are not finite");
}

TEST(ParticleLook, infiniteValuesAreOutsideTheRange) {
    Shown const result = shown(withChannel("t", {1, infiniteValue, -infiniteValue, 2}));
    EXPECT_EQ(result.look.scale->range.low, 1);
    EXPECT_EQ(result.look.scale->range.high, 2);
    EXPECT_TRUE(result.look.scale->isExceeded);
    EXPECT_GT(result.rate(1), 1);
    EXPECT_LE(result.rate(2), 0);
    for (std::size_t i = 0; i < result.count(); ++i) {
        EXPECT_TRUE(std::isfinite(result.vector(i).x * result.vector(i).x)) << "its length must be a number";
    }
}

TEST(ParticleLook, undefinedValuesAreGrayAndCounted) {
    Shown const result = shown(withChannel("t", {notANumber, 1, infiniteValue, 2, notANumber}));
    EXPECT_EQ(result.look.scale->undefinedCount, 2U);
    ASSERT_TRUE(result.cloud.colors);
    EXPECT_EQ(result.color(0), parts(ValueColors().undefined()));
    EXPECT_EQ(result.color(1), parts(RampColors().low));
    EXPECT_EQ(result.color(2), parts(RampColors().above));
    EXPECT_EQ(result.color(3), parts(RampColors().high));
    EXPECT_TRUE(result.look.notes.empty()) << "the bar says how many";
    Shown const none = shown(withChannel("t", {notANumber, notANumber}));
    EXPECT_EQ(none.look.scale->undefinedCount, 2U);
    EXPECT_EQ(none.color(1), parts(ValueColors().undefined()));
}

TEST(ParticleLook, logarithmsSpreadTheColors) {
    ParticleOptions options;
    options.isLogarithmic = true;
    Shown const result = shown(withChannel("t", {1, 10, 1e4}), options);
    EXPECT_EQ(result.look.scale->range.high, 1e4);
    EXPECT_NEAR(result.rate(1), 0.25, 1e-4);
    EXPECT_TRUE(result.look.notes.empty());

    Shown const some = shown(withChannel("t", {0, 1, -3, 100}), options);
    EXPECT_EQ(some.look.scale->range.low, 1);
    EXPECT_EQ(some.look.scale->undefinedCount, 2U);
    EXPECT_EQ(some.color(2), parts(ValueColors().undefined()));
    ASSERT_EQ(some.look.notes.size(), 1U);
    EXPECT_EQ(some.look.notes.front().line(), "folder/row.xyz: 2 of 4 values of 't' have no logarithm");

    EXPECT_THAT(faultOf({withChannel("t", {0, -1})}, options), HasSubstr("has no value of 't' above 0"));
    options.range = ValueRange{0, 1};
    EXPECT_THAT(faultOf({withChannel("t", {1, 2})}, options), HasSubstr("begins above 0"));
}

TEST(ParticleLook, placesAndLengthsOfVectorsAreChannels) {
    ParticleFrame data = withVelocities({{3, 4, 0}, {0, 0, 1}});
    EXPECT_EQ(look({data}, channel("x")).scale->range.high, 1);
    EXPECT_EQ(look({data}, channel("velocity")).scale->range.high, 5);
    data.vectors[0].name = "f";
    EXPECT_EQ(look({data}, channel("f")).scale->range.high, 5);
    EXPECT_EQ(look({data}).scale->name, "f") << "nothing else is there";
}

TEST(ParticleLook, unitsAreShownAndNotMixedUpSilently) {
    ParticleFrame kelvin = withChannel("T", {300, 310});
    kelvin.channels[0].unit = "K";
    EXPECT_EQ(look({kelvin}).scale->title(), "T [K]");
    ParticleFrame celsius = withChannel("T", {20, 30});
    celsius.file = "other.csv";
    celsius.channels[0].unit = "C";
    ParticleLook const both = look({kelvin, celsius});
    ASSERT_EQ(both.notes.size(), 1U);
    EXPECT_EQ(both.notes.front().line(),
              "other.csv: 'T' is in C, that of folder/row.xyz in K; both share a scale");
}

TEST(ParticleLook, whatIsShownOtherwiseOrSaysNothingIsNotChosen) {
    ParticleFrame data = row(2);
    for (char const* const name :
         {"id", "ix", "iy", "iz", "radius", "r", "g", "b", "fx", "fy", "fz", "xu", "charge"}) {
        data.channels.push_back({name, {1, 2}, {}});
    }
    data.sizes = ParticleSizes{4, 2};
    data.vectors.push_back({"f", {8, 9, 10}});
    EXPECT_EQ(look({data}, {}).scale->name, "r") << "no colors are known of";
    data.colors = ParticleColors{{5, 6, 7}, 1};
    EXPECT_EQ(look({data}).coloring, ParticleColoring::OWN);
    ParticleFrame const plain = row(2);
    data.colors.reset();
    data.channels[5].name = "ID";
    data.channels[6].name = "type";
    data.channels[7].name = "zs";
    EXPECT_EQ(look({data}).scale->name, "charge");
    EXPECT_EQ(look({data}, channel("radius")).scale->name, "radius") << "what is asked for is shown";
}

TEST(ParticleLook, wholeNumbersAreKnownAsSuch) {
    EXPECT_TRUE(look({withChannel("t", {1, -5, 1e15})}).scale->isWhole);
    EXPECT_FALSE(look({withChannel("t", {1, 2.5})}).scale->isWhole);
}

// == Kinds ==

namespace {

ParticleFrame withWords(std::vector<std::string> const& words, std::vector<std::uint32_t> const& indices,
                        bool areElements) {
    ParticleFrame data = row(indices.size());
    data.labels.push_back(
        {areElements ? "species" : "residue", words, {indices.begin(), indices.end()}, areElements});
    return data;
}

std::vector<std::string> textsOf(ParticleLegend const& legend) {
    std::vector<std::string> texts;
    for (ParticleLegend::Entry const& entry : legend.entries) {
        texts.push_back(entry.text + " " + std::to_string(entry.count));
    }
    return texts;
}

Color4<float> colorOf(ParticleLegend const& legend, std::string const& text) {
    for (ParticleLegend::Entry const& entry : legend.entries) {
        if (entry.text == text) {
            return entry.color;
        }
    }
    ADD_FAILURE() << "no entry " << text;
    return {};
}

}  // namespace

TEST(ParticleLook, elementsHaveTheirColorsAndCounts) {
    ParticleFrame data = withWords({"O", "H", "Xx", "h", "D"}, {0, 1, 1, 2, 3, 4}, true);
    addVelocities(data, std::vector<Vector3<double>>(6, {1, 0, 0}));
    Shown const result = shown(data);
    ASSERT_TRUE(result.look.legend);
    EXPECT_FALSE(result.look.scale);
    EXPECT_EQ(result.look.legend->title, "element");
    EXPECT_THAT(textsOf(*result.look.legend), testing::ElementsAre("H 3", "D 1", "O 1", "Xx 1"));
    EXPECT_EQ(result.color(0), parts(findElement("O")->color()));
    EXPECT_EQ(result.color(4), parts(findElement("H")->color()));
    EXPECT_EQ(result.color(3), parts(ValueColors().undefined())) << "no known symbol";
    EXPECT_EQ(look({data}, channel("speed")).scale->name, "speed") << "what is asked for is shown";
    EXPECT_EQ(look({data}, channel("element")).legend->entries.size(), 4U);
    EXPECT_EQ(look({data}, channel("species")).legend->title, "species");
}

TEST(ParticleLook, namesOfTypesThatAreElementsCountAsElements) {
    ParticleFrame data = withChannel("type", {1, 2, 3, 2});
    data.typeNames = {{1, "Si"}, {2, "O"}, {3, "O"}};
    EXPECT_THAT(textsOf(*look({data}).legend), testing::ElementsAre("O 3", "Si 1"));
    EXPECT_THAT(textsOf(*look({data}, channel("type")).legend),
                testing::ElementsAre("Si 1", "O (2) 2", "O (3) 1"));
    data.typeNames[3] = "water";
    EXPECT_EQ(look({data}).legend->title, "type") << "then they mean something else";
}

TEST(ParticleLook, typesAndWordsHaveColorsOfTheirOwn) {
    ParticleLook const types = look({withChannel("type", {7, 3, notANumber, 7, 1e9})});
    EXPECT_THAT(textsOf(*types.legend), testing::ElementsAre("3 1", "7 2", "1000000000 1", "no value 1"));
    EXPECT_EQ(colorOf(*types.legend, "no value"), ValueColors().undefined());
    EXPECT_FALSE(colorOf(*types.legend, "3") == colorOf(*types.legend, "7"));

    ParticleFrame words = withWords({"ALA", "GLY"}, {1, 0, 0}, false);
    Shown const result = shown(words);
    EXPECT_THAT(textsOf(*result.look.legend), testing::ElementsAre("ALA 2", "GLY 1"));
    EXPECT_EQ(result.color(0), parts(colorOf(*result.look.legend, "GLY")));
    EXPECT_EQ(result.look.legend->title, "residue");
    // Words that are meant as elements, of which none is one.
    EXPECT_FALSE(look({withWords({"A1", "B2"}, {0, 1}, true)}).legend->entries[0].color ==
                 ValueColors().undefined());
}

TEST(ParticleLook, typesThatAreNoWholeNumbersOrTooManyAreValues) {
    EXPECT_EQ(look({withChannel("type", {1, 1.5})}).scale->name, "type");
    std::vector<double> many;
    for (std::size_t i = 0; i <= ParticleKinds::MOST_TYPES; ++i) {
        many.push_back(static_cast<double>(i));
    }
    EXPECT_TRUE(look({withChannel("type", many)}).scale);
    many.pop_back();
    EXPECT_TRUE(look({withChannel("type", many)}).legend);
}

TEST(ParticleLook, filesShareALegend) {
    ParticleFrame first = withWords({"b", "a"}, {0, 1}, false);
    ParticleFrame second = withWords({"c", "a"}, {0, 1, 1}, false);
    ParticleLook const both = look({first, second});
    EXPECT_THAT(textsOf(*both.legend), testing::ElementsAre("b 1", "a 3", "c 1"));
    ParticleCloud const cloud = CloudMaker(second, both, 1).make({});
    Vector3<float> const* const colors = cloud.system->firstChunk()->channelData(*cloud.colors)->asVectors();
    EXPECT_EQ(parts(colors[1]), parts(colorOf(*both.legend, "a")));
}

TEST(ParticleLook, filesWithoutTheChannelAreGrayWithANote) {
    ParticleFrame const heated = withChannel("heat", {4, 6});
    ParticleFrame bare = row(3);
    bare.file = "folder/bare.xyz";
    std::vector<ParticleFrame> const frames{bare, heated};
    ParticleLook const values = look(frames, channel("heat"));
    EXPECT_EQ(values.scale->range.low, 4);
    EXPECT_EQ(values.scale->range.high, 6);
    EXPECT_EQ(values.scale->undefinedCount, 3U) << "the bar explains the gray";
    ASSERT_EQ(values.notes.size(), 1U);
    EXPECT_EQ(values.notes[0].line(),
              "folder/bare.xyz: has no channel 'heat' (it has: x, y, z): its particles are gray");
    Shown const gray{values, CloudMaker(bare, values, 0).make({})};
    EXPECT_EQ(gray.color(2), parts(ValueColors().undefined()));
    Shown const colored{values, CloudMaker(heated, values, 1).make({})};
    EXPECT_EQ(colored.color(0), parts(RampColors().low));
    EXPECT_EQ(colored.color(1), parts(RampColors().high));

    std::vector<ParticleFrame> const words{withWords({"b", "a"}, {0, 1}, false), bare};
    ParticleLook const kinds = look(words, channel("residue"));
    EXPECT_THAT(textsOf(*kinds.legend), testing::ElementsAre("b 1", "a 1"));
    ASSERT_EQ(kinds.notes.size(), 1U);
    Shown const kindless{kinds, CloudMaker(bare, kinds, 1).make({})};
    EXPECT_EQ(kindless.color(0), parts(ValueColors().undefined()));

    EXPECT_THAT(faultOf(frames, channel("cold")), HasSubstr("folder/bare.xyz: has no channel 'cold'"));
}

TEST(ParticleLook, aChannelOfSomeFilesMaySettleItsRangeByLogarithms) {
    ParticleFrame bare = row(1);
    ParticleOptions options = channel("heat");
    options.isLogarithmic = true;
    ParticleLook const values = look({withChannel("heat", {1, 100, -1}), bare}, options);
    EXPECT_EQ(values.scale->undefinedCount, 2U);
    EXPECT_EQ(values.notes.size(), 2U) << "one value without a logarithm, and one file";
}

TEST(ParticleLook, theFirstKindsAreEasyToTellApart) {
    for (std::size_t i = 0; i < 60; ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            Color4<float> const a = kindColor(i);
            Color4<float> const b = kindColor(k);
            float const distance = std::hypot(a.r - b.r, a.g - b.g, a.b - b.b);
            EXPECT_GT(distance, i < 12 ? 0.2F : 0.01F) << k << " and " << i;
        }
        Color4<float> const c = kindColor(i);
        EXPECT_GT(std::max({c.r, c.g, c.b}) - std::min({c.r, c.g, c.b}), 0.15F) << "no gray";
    }
}

TEST(ParticleLook, valuesAreShownWhereARangeOrAMapIsAskedFor) {
    ParticleFrame data = withWords({"O", "H"}, {0, 1}, true);
    data.channels.push_back({"type", {1, 2}, {}});
    data.channels.push_back({"charge", {-1, 1}, {}});
    ParticleOptions options;
    EXPECT_TRUE(look({data}, options).legend);
    options.colorMap = "viridis";
    EXPECT_EQ(look({data}, options).scale->name, "charge");
    options.channel = "type";
    EXPECT_EQ(look({data}, options).scale->name, "type");
    options.colorMap.clear();
    EXPECT_TRUE(look({data}, options).legend);
    options.range = ValueRange{0, 1};
    options.channel = "element";
    ParticleLook const elements = look({data}, options);
    EXPECT_TRUE(elements.legend);
}

// == Own colors ==

TEST(ParticleLook, colorsOfTheFileAreShownFirst) {
    ParticleFrame data = withVelocities({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    data.channels.push_back({"red", {255, 0, notANumber}, {}});
    data.channels.push_back({"green", {0, 51, 0}, {}});
    data.channels.push_back({"blue", {0, 300, 0}, {}});
    data.colors = ParticleColors{{3, 4, 5}, 255};
    Shown const result = shown(data);
    EXPECT_FALSE(result.look.scale);
    EXPECT_FALSE(result.look.legend);
    EXPECT_EQ(result.color(0), (Parts{1, 0, 0}));
    EXPECT_EQ(result.color(1), (Parts{0, 0.2F, 1}));
    EXPECT_EQ(result.color(2), parts(ValueColors().undefined()));
    ASSERT_EQ(result.look.notes.size(), 2U);
    EXPECT_EQ(result.look.notes.front().line(), "folder/row.xyz: 1 of 3 particles have colors outside 0 to "
                                                "255, which are shown as the nearest inside");
    EXPECT_EQ(result.look.notes.back().line(),
              "folder/row.xyz: 1 of 3 particles have no color and are shown gray");
    EXPECT_TRUE(look({data}, channel("speed")).scale);
    EXPECT_TRUE(look({data}, mode(ParticleMode::ARROWS)).scale) << "arrows show how long they are";
}

TEST(ParticleLook, notesOfAFileAreNotesOfItsLook) {
    ParticleFrame data = row(2);
    data.notes = {"it is taken otherwise"};
    ASSERT_EQ(look({data}).notes.size(), 1U);
    EXPECT_EQ(look({data}).notes[0].line(), "folder/row.xyz: it is taken otherwise");
}

// == What cannot be drawn ==

TEST(ParticleLook, arrowsWithoutADirectionAreLeftOut) {
    std::vector<Vector3<double>> const velocities{{notANumber, 0, 0}, {1, 0, 0}, {infiniteValue, 0, 0}};
    Shown const arrows = shown(withVelocities(velocities), mode(ParticleMode::ARROWS));
    EXPECT_EQ(arrows.count(), 1U);
    EXPECT_THAT(arrows.look.notes.front().line(), HasSubstr("positions or velocities"));
    Shown const spheres = shown(withVelocities(velocities));
    EXPECT_EQ(spheres.count(), 3U);
    EXPECT_EQ(spheres.look.scale->undefinedCount, 1U);
    EXPECT_TRUE(spheres.look.notes.empty());
}

TEST(ParticleLook, coordinatesThatNoDoubleHoldsAreNoted) {
    ParticleFrame data = row(10);
    for (Vector3<double>& p : data.positions) {
        p.x += 1e12;
    }
    EXPECT_TRUE(look({data}).notes.empty());
    for (Vector3<double>& p : data.positions) {
        p.x += 1e16;
    }
    EXPECT_THAT(look({data}).notes.front().line(), HasSubstr("coordinates are so large"));
}

TEST(ParticleLook, unusedChannelsAreNotNeededByTheCloud) {
    ParticleFrame whole = withVelocities({{1, 2, 3}, {4, 5, 6}, {7, 8, 10}});
    whole.vectors.push_back({"force", {3, 4, 5}});
    for (char const* const name :
         {"fx", "fy", "fz", "type", "heat", "red", "green", "blue", "radius", "id"}) {
        auto const factor = static_cast<double>(whole.channels.size());
        whole.channels.push_back({name, {factor, 2 * factor, 3 * factor}, {}});
    }
    ParticleFrame colored = whole;
    colored.colors = ParticleColors{{8, 9, 10}, 255};
    ParticleFrame sized = whole;
    sized.sizes = ParticleSizes{11, 2};
    ParticleFrame named = whole;
    named.typeNames = {{6, "Fe"}, {12, "O"}, {18, "H"}};
    for (ParticleFrame const& frame : {whole, colored, sized, named}) {
        for (char const* const name : {"", "heat", "type", "speed", "velocity", "vy", "force", "x", "id"}) {
            for (ParticleMode const mode : {ParticleMode::SPHERES, ParticleMode::ARROWS}) {
                ParticleOptions options = channel(name);
                options.mode = mode;
                Shown const expected = shown(frame, options);
                ParticleFrame rest = frame;
                expected.look.dropUnused(rest);
                EXPECT_TRUE(rest.channels[12].values.empty() || options.channel == "id") << name;
                ParticleCloud const cloud = CloudMaker(rest, expected.look).make({});
                Shown const made{expected.look, cloud};
                ASSERT_EQ(cloud.colors, expected.cloud.colors);
                ASSERT_EQ(cloud.sizes, expected.cloud.sizes);
                for (std::size_t i = 0; i < 3; ++i) {
                    EXPECT_EQ(parts(made.position(i)), parts(expected.position(i))) << name;
                    EXPECT_EQ(parts(made.vector(i)), parts(expected.vector(i))) << name;
                    EXPECT_TRUE(!cloud.colors || made.color(i) == expected.color(i)) << name;
                    EXPECT_TRUE(!cloud.sizes || made.size(i) == expected.size(i)) << name;
                }
            }
        }
    }
}
