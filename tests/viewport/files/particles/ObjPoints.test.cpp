#include "viewport/files/particles/ObjPoints.h"

#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

ParticleFrame frameOf(std::string const& text) {
    EXPECT_TRUE(isObjOfPoints(text)) << text;
    Result<LoadedFrame> const result = readObjPoints(text, nobody);
    EXPECT_EQ(faultOf(result), "");
    return result.isOk() ? result.value().frame : ParticleFrame();
}

}  // namespace

TEST(ObjPoints, verticesWithoutFacesAreParticles) {
    ParticleFrame const frame =
        frameOf("# scan\nmtllib a.mtl\no a\nv 1 2 3\r\nvn 0 0 1\nv\t4 5 6 # last\np 1 2\n");
    EXPECT_THAT(frame.positions, ElementsAre(Point{1, 2, 3}, Point{4, 5, 6}));
    EXPECT_TRUE(frame.channels.empty());
}

TEST(ObjPoints, verticesMayHaveColorsOrWeights) {
    ParticleFrame const colored = frameOf("v 1 2 3 0.25 0.5 1\nv 4 5 6 1 1 1\n");
    ASSERT_TRUE(colored.colors);
    EXPECT_EQ(colored.colors->full, 1);
    EXPECT_THAT(colored.channel("g")->values, ElementsAre(0.5, 1));
    EXPECT_EQ(frameOf("v 1 2 3 10 20 255 128\n").colors->full, 255);
    EXPECT_THAT(frameOf("v 1 2 3 1\n").channel("w")->values, ElementsAre(1));
}

TEST(ObjPoints, colorsThatAreAllOutOfRangeAreNone) {
    for (char const* const text :
         {"v 1 2 3 -1 0.5 1\nv 4 5 6 0 0 -2\n", "v 1 2 3 1e9 0 0\n", "v 1 2 3 nan 0 0\n"}) {
        ParticleFrame const frame = frameOf(text);
        EXPECT_FALSE(frame.colors) << text;
        EXPECT_EQ(frame.notes.size(), 1U);
        EXPECT_EQ(frame.channels.size(), 3U) << "the numbers stay";
    }
    EXPECT_TRUE(frameOf("v 1 2 3 -1 0.5 1\nv 4 5 6 0 0 1\n").colors);
    EXPECT_EQ(frameOf("v 1 2 3 1 0.5 0\nv 4 5 6 2e5 0 0\n").colors->full, 1) << "one wrong number";
}

TEST(ObjPoints, meshesAndOtherTextsAreNoPoints) {
    for (std::string const& text :
         {mesh_texts::triangleObj, std::string("v 0 0 0\nl 1 1\n"), std::string("v 0 0\n"),
          std::string("x y z\n1 2 3\n"), std::string("# only a comment\n"), std::string(),
          mesh_texts::noise(500)}) {
        EXPECT_FALSE(isObjOfPoints(text)) << text;
    }
    std::string far = "v 0 0 0\nf 1 1 1\n";
    for (int i = 0; i < 20'000; ++i) {
        far += "v 0 0 0\n";
    }
    EXPECT_FALSE(isObjOfPoints(far));
    EXPECT_THAT(faultOf(readObjPoints(far, nobody)), HasSubstr("it is a mesh"));
}

TEST(ObjPoints, damageIsReportedWithItsLine) {
    EXPECT_THAT(faultOf(readObjPoints("v 1 2 3\nv 1 2 x\n", nobody)),
                HasSubstr("line 2: the vertex does not have"));
    EXPECT_THAT(faultOf(readObjPoints("v 1 2 3\nv 1 2\n", nobody)),
                HasSubstr("line 2: the vertex does not have"));
    EXPECT_THAT(faultOf(readObjPoints("v 1 2 3 4 5\n", nobody)),
                HasSubstr("line 1: a vertex has three numbers"));
    EXPECT_EQ(faultOf(readObjPoints("p 1\n", nobody)), "has no vertices");
    EXPECT_THAT(readObjPoints("v 1 2 3\nv 1 2 30", nobody).value().warning,
                HasSubstr("the last line has no end"));
}

TEST(ObjPoints, everySingleByteMayBeWrong) {
    std::string const text = "# a\nv 1 2 3 0 0 1\nv 4 5 6 1 1 0\np 1\n";
    for (std::size_t place = 0; place < text.size(); ++place) {
        for (char const wrong : {'\0', '\n', 'v', 'f', '-', '\xFF'}) {
            std::string damaged = text;
            damaged[place] = wrong;
            static_cast<void>(isObjOfPoints(damaged));
            Result<LoadedFrame> const result = readObjPoints(damaged, nobody);
            EXPECT_TRUE(result.isOk() || !result.fault().message.empty());
        }
    }
}

TEST(ObjPoints, linesMayBeIndented) {
    EXPECT_THAT(frameOf("  v 1 2 3\n\tv 4 5 6\nv 7 8 9\n").positions,
                ElementsAre(Point{1, 2, 3}, Point{4, 5, 6}, Point{7, 8, 9}));
    EXPECT_FALSE(isObjOfPoints("v 1 2 3\n  f 1 1 1\n"));
}
