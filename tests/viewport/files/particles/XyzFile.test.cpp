#include "viewport/files/particles/XyzFile.h"

#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

std::string const extended =
    "2\nLattice=\"2 0 0 1 3 0 0 0 4\" Origin=\"-1 -2 -3\" "
    "Properties=species:S:1:pos:R:3:velo:R:3:id:I:1:forces:R:3:stress:R:2:fixed:L:1 Time=1.5 Timestep=30\n"
    "Ar 1 2 3 0.1 0.2 0.3 8 -1 -2 -3 5 6 T\n"
    "Ne 4 5 6 0.4 0.5 0.6 7 -4 -5 -6 7 8 F\n";

std::string faultIn(std::string const& text) {
    return faultOf(readXyz(text, std::nullopt, nobody));
}

std::vector<ParticleFrame> framesOf(std::string const& text) {
    return viewport::framesOf(readXyz, text);
}

}  // namespace

TEST(XyzFile, plainFramesHaveAKindAndCoordinates) {
    auto const frames = framesOf("2\nAtoms. Timestep: 50\n1 0 0.5 1\n2 1 2 3\n1\n\nAr 7 8 9\n");
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].timestep, 50);
    EXPECT_THAT(frames[0].positions, ElementsAre(Point{0, 0.5, 1}, Point{1, 2, 3}));
    EXPECT_THAT(frames[0].channel("type")->values, ElementsAre(1, 2));
    EXPECT_EQ(frames[1].timestep, 1);
    EXPECT_THAT(frames[1].positions, ElementsAre(Point{7, 8, 9}));
    EXPECT_TRUE(frames[1].channels.empty());
    ASSERT_NE(frames[1].elements(), nullptr);
    EXPECT_THAT(frames[1].elements()->words, ElementsAre("Ar"));
    EXPECT_FALSE(frames[1].box);
}

TEST(XyzFile, furtherColumnsAreVelocitiesOrChannels) {
    auto const bare = framesOf("1\n\n1 2 3\n");
    EXPECT_THAT(bare.at(0).positions, ElementsAre(Point{1, 2, 3}));
    auto const moving = framesOf("1\n\nH 1 2 3 4 5 6\n");
    EXPECT_THAT(velocitiesOf(moving.at(0)), ElementsAre(Point{4, 5, 6}));
    auto const charged = framesOf("1\n\nH 1 2 3 -0.5\n");
    EXPECT_THAT(charged.at(0).channel("column 5")->values, ElementsAre(-0.5));
}

TEST(XyzFile, extendedCommentsNameColumnsAndBox) {
    auto const frames = framesOf(extended);
    ASSERT_EQ(frames.size(), 1U);
    ParticleFrame const& frame = frames[0];
    EXPECT_EQ(frame.timestep, 30);
    EXPECT_EQ(frame.time, 1.5);
    EXPECT_THAT(frame.positions, ElementsAre(Point{4, 5, 6}, Point{1, 2, 3}));
    EXPECT_THAT(velocitiesOf(frame), ElementsAre(Point{0.4, 0.5, 0.6}, Point{0.1, 0.2, 0.3}));
    std::vector<std::string> names;
    for (ParticleChannel const& channel : frame.channels) {
        names.push_back(channel.name);
    }
    EXPECT_THAT(names, ElementsAre("velo.x", "velo.y", "velo.z", "id", "forces.x", "forces.y", "forces.z",
                                   "stress.1", "stress.2"));
    EXPECT_THAT(frame.channel("forces.z")->values, ElementsAre(-6, -3));
    ASSERT_NE(frame.vector("forces"), nullptr);
    EXPECT_THAT(frame.vector("forces")->columns, ElementsAre(4, 5, 6));
    ASSERT_NE(frame.elements(), nullptr);
    EXPECT_EQ(frame.elements()->name, "species");
    EXPECT_THAT(frame.elements()->words, ElementsAre("Ne", "Ar"));
    EXPECT_THAT(frame.label("fixed")->words, ElementsAre("F", "T"));
    ASSERT_TRUE(frame.box);
    EXPECT_TRUE((frame.box->origin == Vector3<double>{-1, -2, -3}));
    EXPECT_TRUE((frame.box->edges[1] == Vector3<double>{1, 3, 0}));
}

TEST(XyzFile, boxesArePeriodicAlongTheEdgesThatTheCommentNames) {
    using Flags = std::array<bool, 3>;
    std::string const lattice = "1\nLattice={0 0 4 0 3 0 2 1 0} ";
    for (char const* const flags : {"pbc=\"T F T\"", "pbc=\"1 0 1\"", "pbc=[True False True]"}) {
        ParticleFrame const frame = framesOf(lattice + flags + "\nH 1 2 3\n").at(0);
        ASSERT_TRUE(frame.box) << flags;
        EXPECT_EQ(frame.box->isPeriodic, (Flags{true, false, true})) << flags;
        EXPECT_TRUE((frame.box->edges[0] == Vector3<double>{0, 0, 4}));
        EXPECT_TRUE((frame.box->edges[2] == Vector3<double>{2, 1, 0}));
    }
    for (char const* const flags : {"", "pbc=\"T F\"", "pbc=yes"}) {
        EXPECT_EQ(framesOf(lattice + flags + "\nH 1 2 3\n").at(0).box->isPeriodic, (Flags{true, true, true}));
    }
}

TEST(XyzFile, particlesMayHaveColorsAndSizes) {
    ParticleFrame const frame =
        framesOf("1\nProperties=pos:R:3:color:R:3:radius:R:1:charge:R:1\n1 2 3 0.25 0.5 1 1.5 0\n"
                 "1\nProperties=pos:R:3:color:R:3:radius:R:1:charge:R:1\n1 2 3 0.25 0.5 1 1.5 -1.0D-01\n")
            .at(1);
    ASSERT_TRUE(frame.colors);
    EXPECT_THAT(frame.colors->columns, ElementsAre(0, 1, 2));
    EXPECT_EQ(frame.channels[1].name, "color.g");
    EXPECT_EQ(frame.colors->full, 1);
    ASSERT_TRUE(frame.sizes);
    EXPECT_EQ(frame.sizes->diameters, 2);
    EXPECT_EQ(frame.channel("charge")->values[0], -0.1);
    EXPECT_TRUE(frame.vectors.empty());
}

TEST(XyzFile, damageIsReportedWithItsLineAndReason) {
    EXPECT_EQ(faultIn("two\n\n"), "line 1: 'two' is not a number of particles");
    EXPECT_EQ(faultIn("-1\n\n"), "line 1: '-1' is not a number of particles");
    EXPECT_EQ(faultIn("1\n\nH 1 2 3\nH 1 2 3\n"), "line 4: 'H' is not a number of particles");
    EXPECT_EQ(faultIn("1\n\nH 1 2\n").substr(0, 7), "line 3:");
    EXPECT_EQ(faultIn("1\n\nH 1 2 x\n"), "line 3: 'x' in column 'z' is not a number");
    EXPECT_EQ(faultIn("2\n\nH 1 2 3\n1\n\nH 1 2 3\n"), "line 4: has 1 of 4 values");
    EXPECT_EQ(faultIn("1\nLattice=\"1 0 0\"\nH 1 2 3\n"), "line 2: the lattice '1 0 0' is not nine numbers");
    EXPECT_EQ(faultIn("1\nOrigin=\"1 0\"\nH 1 2 3\n"), "line 2: the origin '1 0' is not three numbers");
    for (char const* const properties : {"pos:R", "pos:R:x", "pos:Q:3", "species:S:1",
                                         "pos:R:3:a:R:99999999999", "pos:R:3:a:R:0", "pos:R:2", ":R:3", ""}) {
        std::string const text = std::string("1\nProperties=") + properties + " a=1\nH 1 2 3\n";
        if (*properties != '\0') {
            EXPECT_THAT(faultIn(text), HasSubstr("line 2: the properties")) << properties;
        } else {
            EXPECT_NE(faultIn(text), "") << "an empty list names no positions";
        }
    }
    EXPECT_EQ(faultIn(""), "holds no frame");
}

TEST(XyzFile, countsBeyondTheFileTakeNoMemory) {
    EXPECT_EQ(
        faultIn("18446744073709551615\n\nH 1 2 3\n"),
        "line 3: the text ends after 1 of 18446744073709551615 particles; the file is cut off in frame 0");
}

TEST(XyzFile, ofAFileCutOffTheCompleteFramesAreGiven) {
    std::string const text = extended + extended;
    ValueList<Point> const whole = framesOf(extended)[0].positions;
    for (std::size_t size = 0; size < text.size(); ++size) {
        std::vector<char> const bytes(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
        Result<LoadedFrame> const result = readXyz({bytes.data(), bytes.size()}, 0, nobody);
        if (size + 1 < extended.size()) {
            EXPECT_FALSE(result.isOk() && result.value().warning.empty()) << size;
            continue;
        }
        ASSERT_TRUE(result.isOk()) << size << ' ' << faultOf(result);
        EXPECT_EQ(result.value().frame.positions, whole);
        EXPECT_EQ(result.value().warning.empty(), size == extended.size()) << size;
        EXPECT_EQ(result.value().count, size < text.size() - 1 ? 1U : 2U) << size;
    }
}

TEST(XyzFile, onlyTheFrameThatIsShownMustHoldNumbers) {
    std::string const text = "1\n\nH 1 2 x\n1\n\nH 4 5 6\n1\n\nH 7 8 9\n";
    Result<LoadedFrame> const last = readXyz(text, std::nullopt, nobody);
    ASSERT_EQ(faultOf(last), "");
    EXPECT_EQ(last.value().count, 3U);
    EXPECT_THAT(last.value().frame.positions, ElementsAre(Point{7, 8, 9}));
    EXPECT_EQ(faultOf(readXyz(text, 0, nobody)), "line 3: 'x' in column 'z' is not a number");
}

TEST(XyzFile, aWrongCountIsReportedInItsOwnFrame) {
    std::string const frame = "1\n\nH 1 2 3\n";
    std::string const tooFew = "2\n\nH 1 2 3\n";
    for (std::optional<std::size_t> const& number : {std::optional<std::size_t>(), {0}, {1}, {2}}) {
        EXPECT_EQ(faultOf(readXyz(frame + tooFew + frame + frame, number, nobody)),
                  "line 7: has 1 of 4 values");
    }
}

TEST(XyzFile, everySingleByteMayBeWrong) {
    for (std::size_t place = 0; place < extended.size(); ++place) {
        for (char const wrong : {'\0', '\n', ' ', '9', '-', '"', ',', '\xFF'}) {
            std::string damaged = extended;
            damaged[place] = wrong;
            Result<LoadedFrame> const result = readXyz(damaged, std::nullopt, nobody);
            EXPECT_TRUE(result.isOk() ? result.value().count > 0 : !result.fault().message.empty());
        }
    }
}

TEST(XyzFile, aPropertyOfMoreComponentsThanNumbersCountIsDamage) {
    for (char const* const count : {"1001", "18446744073709551613", "18446744073709551615"}) {
        std::string const comment = "Properties=pos:R:3:rest:R:" + std::string(count);
        EXPECT_THAT(faultIn("1\n" + comment + "\n1 2 3\n"), HasSubstr("are not understood")) << count;
    }
}
