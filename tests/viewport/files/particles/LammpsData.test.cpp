#include "viewport/files/particles/LammpsData.h"

#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

using Point = Vector3<double>;

std::string const head =
    "LAMMPS data file via write_data, version 1 Jan 2024, timestep = 40, units = real\n\n"
    "2 atoms\n3 atom types  # of which two are used\n1 bonds\n1 bond types\n\n"
    "-1 3 xlo xhi\n0 2 ylo yhi\n5 6 zlo zhi\n";

std::string const full =
    head + "0.5 0.25 -0.75 xy xz yz\n\nMasses\n\n1 12.011 # C\n2 1.008\n3 15.999 # O  oxygen\n\n"
           "Pair Coeffs # lj/cut\n\n1 0.1 3.4\n2 0.1 3.4\n3 0.2 3\n\n"
           "Atoms # full\n\n2 1 3 -0.5 1 1.5 5.25 0 0 1\n1 1 1 0.5 0 0.5 5.5 0 0 0 # first\n\n"
           "Velocities\n\n1 0.1 0.2 0.3\n2 0.4 0.5 0.6\n\nBonds\n\n1 1 1 2\n";

ParticleFrame frameOf(std::string const& text) {
    EXPECT_TRUE(isLammpsData(text));
    Result<LoadedFrame> const result = readLammpsData(text, nobody);
    EXPECT_EQ(faultOf(result), "");
    return result.isOk() ? result.value().frame : ParticleFrame();
}

std::string faultIn(std::string const& text) {
    return faultOf(readLammpsData(text, nobody));
}

std::string atoms(std::string const& style, std::string const& rest) {
    return head + "\nAtoms" + style + "\n\n2 " + rest + "\n1 " + rest + "\n";
}

}  // namespace

TEST(LammpsData, atomsVelocitiesTypesAndBoxAreRead) {
    ParticleFrame const frame = frameOf(full);
    EXPECT_EQ(frame.timestep, 40);
    EXPECT_THAT(frame.positions, ElementsAre(Point{0, 0.5, 5.5}, Point{1, 1.5, 5.25}));
    EXPECT_THAT(velocitiesOf(frame), ElementsAre(Point{0.1, 0.2, 0.3}, Point{0.4, 0.5, 0.6}));
    EXPECT_THAT(frame.channel("type")->values, ElementsAre(1, 3));
    EXPECT_THAT(frame.channel("mol")->values, ElementsAre(1, 1));
    EXPECT_THAT(frame.channel("q")->values, ElementsAre(0.5, -0.5));
    EXPECT_THAT(frame.channel("iz")->values, ElementsAre(0, 1));
    EXPECT_EQ(frame.channel("vx")->unit, "Å/fs");
    EXPECT_THAT(frame.typeNames, ElementsAre(Pair(1, "C"), Pair(3, "O")));
    ASSERT_TRUE(frame.box);
    EXPECT_TRUE((frame.box->origin == Point{-1, 0, 5}));
    EXPECT_TRUE((frame.box->edges[0] == Point{4, 0, 0}));
    EXPECT_TRUE((frame.box->edges[1] == Point{0.5, 2, 0}));
    EXPECT_TRUE((frame.box->edges[2] == Point{0.25, -0.75, 1}));
}

TEST(LammpsData, everyCommonStyleHasItsColumns) {
    struct Row {
        char const* style;
        char const* row;
        char const* channel;
        double value;
    };
    for (Row const& row : {Row{"", "3 1.5 2.5 3.5", "type", 3},
                           {"  # atomic", "3 1.5 2.5 3.5", "type", 3},
                           {" # charge", "3 -1 1.5 2.5 3.5", "q", -1},
                           {" # bond", "7 3 1.5 2.5 3.5", "mol", 7},
                           {" # angle", "7 3 1.5 2.5 3.5", "mol", 7},
                           {" # molecular", "7 3 1.5 2.5 3.5 0 0 -1", "iz", -1},
                           {" # full/kk", "7 3 0.5 1.5 2.5 3.5", "q", 0.5},
                           {" # sphere", "3 0.25 1 1.5 2.5 3.5", "diameter", 0.25},
                           {" # dipole", "3 0.5 1.5 2.5 3.5 1 2 3", "muy", 2},
                           {" # ellipsoid", "3 1 0.8 1.5 2.5 3.5", "density", 0.8},
                           {" # hybrid", "3 1.5 2.5 3.5 9", "column6", 9}}) {
        ParticleFrame const frame = frameOf(atoms(row.style, row.row));
        ASSERT_THAT(frame.positions, ElementsAre(Point{1.5, 2.5, 3.5}, Point{1.5, 2.5, 3.5})) << row.style;
        ASSERT_NE(frame.channel(row.channel), nullptr) << row.style;
        EXPECT_EQ(frame.channel(row.channel)->values[0], row.value) << row.style;
        EXPECT_EQ(frame.channel("type")->values[1], 3);
    }
    EXPECT_NE(frameOf(atoms(" # dipole", "3 0.5 1.5 2.5 3.5 1 2 3")).vector("mu"), nullptr);
    EXPECT_EQ(frameOf(atoms(" # sphere", "3 0.25 1 1.5 2.5 3.5")).sizes->diameters, 1);
}

TEST(LammpsData, aStyleThatIsNotCertainIsAFault) {
    EXPECT_THAT(
        faultIn(atoms("", "1 2 1.5 2.5 3.5")),
        HasSubstr("line 12: the atoms have 6 columns of a style that is not named; write 'Atoms # full'"));
    EXPECT_THAT(faultIn(atoms("", "1 1.5 2.5 3.5 0 0 0")), HasSubstr("have 8 columns"));
    EXPECT_THAT(faultIn(atoms(" # odd", "1 1.5 2.5 3.5")), HasSubstr("the atom style 'odd' is not known"));
}

TEST(LammpsData, typesMayBeLabels) {
    std::string const labels = "\nAtom Type Labels\n\n1 C\n2 H\n3 O1\n\nMasses\n\nC 12\nH 1\nO1 16\n";
    ParticleFrame const frame =
        frameOf(head + labels + "\nAtoms # atomic\n\n1 O1 0 0 0\n2 C 1 0 0\n\nPair Coeffs\n\nC 1 2\n");
    EXPECT_THAT(frame.channel("type")->values, ElementsAre(3, 1));
    EXPECT_TRUE(frame.labels.empty());
    EXPECT_EQ(frame.typeNames.at(3), "O1");
    EXPECT_THAT(faultIn(head + labels + "\nAtoms # atomic\n\n1 N 0 0 0\n2 C 1 0 0\n"),
                HasSubstr("the type 'N' has no label"));
}

TEST(LammpsData, boxesMayHaveAnyOrientation) {
    ParticleFrame const frame = frameOf("title\n1 atoms\n1 atom types\n1 2 3 avec\n4 5 6 bvec\n7 8 9 cvec\n"
                                        "10 20 30 abc origin\n\nAtoms\n\n1 1 0 0 0\n");
    EXPECT_TRUE((frame.box->origin == Point{10, 20, 30}));
    EXPECT_TRUE((frame.box->edges[1] == Point{4, 5, 6}));
}

TEST(LammpsData, damageIsReportedWithItsLineAndReason) {
    EXPECT_THAT(faultIn(head), HasSubstr("the section 'Atoms' is missing"));
    EXPECT_EQ(faultIn(head + "\nAtoms\n\n1 1 0 0 0\n"),
              "line 14: the text ends after 1 of 2 particles; the file is cut off");
    EXPECT_EQ(faultIn(head + "\nAtoms\n\n1 1 0 0 0\n2 1 0 x 0\n"),
              "line 15: 'x' in column 'y' is not a number");
    EXPECT_THAT(faultIn(atoms("", "1 0 0 0") + "\nVelocities\n\n1 0 0 0\n3 0 0 0\n"),
                HasSubstr("of other ids"));
    EXPECT_THAT(faultIn("t\nAtoms\n\n1 1 0 0 0\n"), HasSubstr("does not tell the number of atoms"));
    EXPECT_THAT(faultIn("t\n18446744073709551615 atoms\n1 atom types\n\nAtoms\n\n1 1 0 0 0\n"),
                HasSubstr("the text ends after 1 of"));
    EXPECT_FALSE(isLammpsData("1\n\nH 0 0 0\n"));
    EXPECT_FALSE(isLammpsData("x,y,z\n1,2,3\n"));
    EXPECT_FALSE(isLammpsData("notes\n2 atoms\nare small\n"));
}

TEST(LammpsData, everyCutAndEveryWrongByteIsSurvived) {
    std::size_t const bonds = full.find("\nBonds");
    for (std::size_t size = 0; size < full.size(); ++size) {
        std::vector<char> const bytes(full.begin(), full.begin() + static_cast<std::ptrdiff_t>(size));
        Result<LoadedFrame> const result = readLammpsData({bytes.data(), bytes.size()}, nobody);
        if (size < full.find("Velocities") - 2) {
            EXPECT_FALSE(result.isOk() && result.value().warning.empty()) << size;
        } else if (size >= bonds) {
            EXPECT_EQ(faultOf(result), "") << size;
        }
    }
    for (std::size_t place = 0; place < full.size(); ++place) {
        for (char const wrong : {'\0', '\n', ' ', '9', '-', '\xFF', '#'}) {
            std::string damaged = full;
            damaged[place] = wrong;
            Result<LoadedFrame> const result = readLammpsData(damaged, nobody);
            EXPECT_TRUE(result.isOk() || !result.fault().message.empty());
        }
    }
}
