#include "viewport/files/particles/name_meanings.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using namespace vellum::viewport;
using testing::ElementsAre;

namespace {

/// A frame of one particle with these channels, of which each has its number as its value.
ParticleFrame frameOf(std::vector<std::string> const& names) {
    ParticleFrame frame;
    for (std::string const& name : names) {
        frame.channels.push_back({name, {static_cast<double>(frame.channels.size()) / 100}, {}});
    }
    findMeanings(frame);
    return frame;
}

std::vector<std::string> vectorNames(std::vector<std::string> const& names) {
    std::vector<std::string> found;
    for (ParticleVector const& vector : frameOf(names).vectors) {
        found.push_back(vector.name);
    }
    return found;
}

}  // namespace

TEST(NameMeanings, threeChannelsOfOneNameAreAVector) {
    EXPECT_THAT(vectorNames({"fx", "fy", "fz"}), ElementsAre("f"));
    EXPECT_THAT(vectorNames({"force.x", "force.y", "force.z"}), ElementsAre("force"));
    EXPECT_THAT(vectorNames({"Force X", "Force Y", "Force Z"}), ElementsAre("Force"));
    EXPECT_THAT(vectorNames({"Force:0", "Force:1", "Force:2"}), ElementsAre("Force"));
    EXPECT_THAT(vectorNames({"q", "muz", "muy", "mux", "fx", "fy", "fz"}), ElementsAre("mu", "f"));
    EXPECT_THAT(frameOf({"q", "muz", "muy", "mux"}).vectors.at(0).columns, ElementsAre(3, 2, 1));
}

TEST(NameMeanings, otherChannelsAreNoVectors) {
    for (std::vector<std::string> const& names : {std::vector<std::string>{"fx", "fy"},
                                                  {"ix", "iy", "iz"},
                                                  {"xu", "yu", "zu"},
                                                  {"xs", "ys", "zs"},
                                                  {"x", "y", "z"},
                                                  {"sxx", "sxy", "sxz", "syx", "syy", "syz"},
                                                  {"Stress:0", "Stress:1", "Stress:2", "Stress:3"},
                                                  {"a0", "a1", "a2"},
                                                  {"Color.X", "Color.Y", "Color.Z"}}) {
        EXPECT_TRUE(vectorNames(names).empty()) << names.front();
    }
}

TEST(NameMeanings, theVelocityIsTheFirstVector) {
    for (std::vector<std::string> const& names :
         {std::vector<std::string>{"fx", "fy", "fz", "vx", "vy", "vz"},
          {"fx", "fy", "fz", "Velocity X", "Velocity Y", "Velocity Z"},
          {"fx", "fy", "fz", "velocity:0", "velocity:1", "velocity:2"},
          {"fx", "fy", "fz", "velo.x", "velo.y", "velo.z"}}) {
        EXPECT_THAT(vectorNames(names), ElementsAre("velocity", "f")) << names.back();
        EXPECT_THAT(frameOf(names).velocity()->columns, ElementsAre(3, 4, 5));
    }
    EXPECT_THAT(vectorNames({"vel_x", "vel_y", "vel_z", "vx", "vy", "vz"}), ElementsAre("velocity", "vel"));
    EXPECT_EQ(frameOf({"fx", "fy", "fz"}).velocity(), nullptr);
}

TEST(NameMeanings, colorsAndSizesAreFoundWhateverTheirSpelling) {
    for (std::vector<std::string> const& names : {std::vector<std::string>{"a", "b", "g", "r"},
                                                  {"a", "Blue", "GREEN", "red"},
                                                  {"a", "Color.B", "Color.G", "Color.R"},
                                                  {"a", "color_b", "color_g", "color_r"}}) {
        ParticleFrame const frame = frameOf(names);
        ASSERT_TRUE(frame.colors) << names.back();
        EXPECT_THAT(frame.colors->columns, ElementsAre(3, 2, 1));
    }
    EXPECT_FALSE(frameOf({"r", "g"}).colors);
    struct Row {
        std::string name;
        double diameters;
    };
    for (Row const& row : {Row{"Radius", 2}, {"radii", 2}, {"diameter", 1}, {"_size", 1}}) {
        ParticleFrame const frame = frameOf({"a", row.name});
        ASSERT_TRUE(frame.sizes) << row.name;
        EXPECT_EQ(frame.sizes->column, 1U);
        EXPECT_EQ(frame.sizes->diameters, row.diameters) << row.name;
    }
    EXPECT_EQ(frameOf({"size", "radius"}).sizes->column, 1U);
    EXPECT_FALSE(frameOf({"gyration radius"}).sizes);
}

TEST(NameMeanings, theLargestValueTellsTheBrightest) {
    ParticleFrame frame = frameOf({"r", "g", "b"});
    EXPECT_EQ(frame.colors->full, 1);
    frame.channels[1].values[0] = 1.5;
    findMeanings(frame);
    EXPECT_EQ(frame.colors->full, 255);
    frame.channels[1].values[0] = 256;
    findMeanings(frame);
    EXPECT_EQ(frame.colors->full, 65535);
}

TEST(NameMeanings, namesOfElementsTellThem) {
    ParticleFrame frame;
    for (char const* const name : {"molecule", "Element", "species"}) {
        frame.labels.push_back({name, {"H"}, {0}, false});
    }
    EXPECT_EQ(frame.elements(), nullptr);
    findMeanings(frame);
    EXPECT_EQ(frame.elements(), &frame.labels[1]);
    EXPECT_TRUE(frame.labels[2].areElements);
    EXPECT_FALSE(frame.labels[0].areElements);
}
