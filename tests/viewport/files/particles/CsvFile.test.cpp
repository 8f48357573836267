#include "viewport/files/particles/CsvFile.h"

#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;

namespace {

using Point = Vector3<double>;

std::string const table = "id,x,y,z,mass,name\n2,1,2,3,0.5,\"a, b\"\n1,-4,5.5,6e1,,plain\n";

ParticleFrame frameOf(std::string const& text) {
    Result<LoadedFrame> const result = readCsv(text, nobody);
    EXPECT_EQ(faultOf(result), "");
    return result.isOk() ? result.value().frame : ParticleFrame();
}

std::string faultIn(std::string const& text) {
    return faultOf(readCsv(text, nobody));
}

}  // namespace

TEST(CsvFile, columnsAreFoundByTheirNames) {
    ParticleFrame const frame = frameOf(table);
    EXPECT_THAT(frame.positions, ElementsAre(Point{-4, 5.5, 60}, Point{1, 2, 3}));
    ASSERT_EQ(frame.channels.size(), 2U);
    EXPECT_THAT(frame.label("name")->words, ElementsAre("plain", "a, b"));
    EXPECT_TRUE(std::isnan(frame.channel("mass")->values[0]));
    EXPECT_EQ(frame.channel("mass")->values[1], 0.5);
    EXPECT_THAT(frame.channel("id")->values, ElementsAre(1, 2));
}

TEST(CsvFile, everyUsualSpellingIsUnderstood) {
    for (char const* const text :
         {"x,y,z,vx,vy,vz\n1,2,3,4,5,6\n", "X; Y; Z; VX; VY; VZ\r\n1; 2; 3; 4; 5; 6\r\n",
          "\xEF\xBB\xBF# x\ty\tz\tvx\tvy\tvz\n1\t2\t3\t4\t5\t6\n", "x y z vx vy vz\n 1 2  3 4 5 6\n",
          "\"Velocity:0\",\"Velocity:1\",\"Velocity:2\",\"Points:0\",\"Points:1\",\"Points:2\"\n4,5,6,1,2,"
          "3\n",
          "Position X,Position Y,Position Z,vel_x,vel_y,vel_z\n\"1\",\"2\",\"3\", 4 , 5 ,6 \n",
          "\nx,y,z,velocity_x,velocity_y,velocity_z\n\n1,2,3,4,5,6\n\n"}) {
        ParticleFrame const frame = frameOf(text);
        EXPECT_THAT(frame.positions, ElementsAre(Point{1, 2, 3})) << text;
        EXPECT_THAT(velocitiesOf(frame), ElementsAre(Point{4, 5, 6})) << text;
        EXPECT_TRUE(isCsvOfParticles(text)) << text;
    }
    EXPECT_FALSE(isCsvOfParticles("x,y\n1,2\n"));
    EXPECT_FALSE(isCsvOfParticles(""));
    EXPECT_FALSE(isCsvOfParticles("v 0 0 0\nv 1 0 0\n"));
}

TEST(CsvFile, emptyValuesBetweenTabulatorsAreMissing) {
    ParticleFrame const frame = frameOf("x\ty\tz\ta\tb\n1\t2\t3\t\t7\n");
    EXPECT_TRUE(std::isnan(frame.channel("a")->values.at(0)));
    EXPECT_EQ(frame.channel("b")->values.at(0), 7);
}

TEST(CsvFile, unitsAreKeptApartFromNames) {
    for (char const* const text : {"x [m],y [m],z [m],Temperature (K),c_s[1],p\n1,2,3,300,4,5\n",
                                   "X (m);Y (m);Z(m);Temperature [K];c_s[1];p\n1;2;3;300;4;5\n",
                                   "x (m) y (m) z (m) Temperature (K) c_s[1] p\n1 2 3 300 4 5\n"}) {
        ParticleFrame const frame = frameOf(text);
        EXPECT_THAT(frame.positions, ElementsAre(Point{1, 2, 3}));
        ASSERT_NE(frame.channel("Temperature"), nullptr) << text;
        EXPECT_EQ(frame.channel("Temperature")->unit, "K");
        ASSERT_NE(frame.channel("c_s[1]"), nullptr) << text;
        EXPECT_EQ(frame.channel("c_s[1]")->unit, "");
        EXPECT_EQ(frame.channel("p")->unit, "");
    }
    EXPECT_THAT(frameOf("Position (X),Position (Y),Position (Z)\n1,2,3\n").positions,
                ElementsAre(Point{1, 2, 3}));
    EXPECT_EQ(faultIn("x,y,z,(K)\n1,2,3,4,5\n"), "line 2: has more than 4 values");
}

TEST(CsvFile, missingValuesAreNotNumbers) {
    std::string rows;
    for (char const* const missing : {"", "NA", "nan", "NaN", "N/A", "null", "-"}) {
        rows += std::string("1,2,3,") + missing + "\n";
    }
    ParticleFrame const frame = frameOf("x,y,z,a\n" + rows + "1,2,3,1.0D+03\n");
    ASSERT_EQ(frame.channels.size(), 1U);
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_TRUE(std::isnan(frame.channels[0].values[i])) << i;
    }
    EXPECT_EQ(frame.channels[0].values[7], 1000);
    EXPECT_TRUE(std::isnan(frameOf("x,y,z\n1,NA,3\n").positions[0].y));
}

TEST(CsvFile, columnsOfWordsAreLabels) {
    ParticleFrame const frame =
        frameOf("x,y,z,kind,note\n0,0,0,ant,NA\n1,0,0,bee,\n2,0,0,ant,\"a \"\"b\"\"\"\n");
    EXPECT_TRUE(frame.channels.empty());
    ASSERT_EQ(frame.labels.size(), 2U);
    EXPECT_THAT(frame.label("kind")->words, ElementsAre("ant", "bee"));
    EXPECT_THAT(frame.label("kind")->indices, ElementsAre(0, 1, 0));
    EXPECT_THAT(frame.label("note")->words, ElementsAre("NA", "", "a \"b\""));
}

TEST(CsvFile, aTableMayHaveNoRows) {
    ParticleFrame const frame = frameOf("x,y,z,a\n");
    EXPECT_TRUE(frame.positions.empty());
    EXPECT_EQ(frame.channels.size(), 1U);
}

TEST(CsvFile, damageIsReportedWithItsLineAndReason) {
    EXPECT_EQ(faultIn("a,b\n1,2\n"), "line 1: no columns x, y and z are named");
    EXPECT_EQ(faultIn("x,y,z\n1,2,3\n\n1,,3\n"), "line 4: '' in column 'y' is not a number");
    EXPECT_EQ(faultIn("x,y,z\n1,2,3\n1,2\n"), "line 3: has 2 of 3 values");
    EXPECT_EQ(faultIn("x,y,z\n1,2,3,4\n"), "line 2: has more than 3 values");
    EXPECT_EQ(faultIn("x,y,z,q\n1,2,3,4\n1,2,3,four\n"), "line 3: 'four' in column 'q' is not a number");
    EXPECT_EQ(faultIn("x,y,z\n1,2,0x\n"), "line 2: '0x' in column 'z' is not a number");
    EXPECT_EQ(faultIn("x,y,z\n1,2," + std::string(1000, 'w') + "\n"),
              "line 2: '" + std::string(32, 'w') + "...' in column 'z' is not a number");
}

TEST(CsvFile, theLastLineWithoutAnEndIsReadWithAWarning) {
    Result<LoadedFrame> const result = readCsv("x,y,z\n1,2,3\n4,5,67", nobody);
    ASSERT_TRUE(result.isOk());
    EXPECT_THAT(result.value().frame.positions, ElementsAre(Point{1, 2, 3}, Point{4, 5, 67}));
    EXPECT_EQ(result.value().warning, "line 3: the last line has no end, its last value may be cut off");
}

TEST(CsvFile, everyCutIsAFaultAWarningOrARowLess) {
    for (std::size_t size = 0; size < table.size(); ++size) {
        std::vector<char> const bytes(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(size));
        Result<LoadedFrame> const result = readCsv({bytes.data(), bytes.size()}, nobody);
        bool const isBetweenLines = size > 0 && bytes[size - 1] == '\n';
        EXPECT_EQ(result.isOk() && result.value().warning.empty(), isBetweenLines) << size;
    }
}

TEST(CsvFile, everySingleByteMayBeWrong) {
    for (std::size_t place = 0; place < table.size(); ++place) {
        for (char const wrong : {'\0', '\n', ' ', '9', '-', '"', ',', '\xFF'}) {
            std::string damaged = table;
            damaged[place] = wrong;
            Result<LoadedFrame> const result = readCsv(damaged, nobody);
            EXPECT_TRUE(result.isOk() ? result.value().count > 0 : !result.fault().message.empty());
        }
    }
}

TEST(CsvFile, quotesEndWithTheirCell) {
    EXPECT_EQ(faultIn("x,y,z,m\n1,2,\"3\"4,5\n"), "line 2: has text behind the quotes of '3'");
    EXPECT_EQ(faultIn("x,y,z,name\n1,2,3,\"a\"b\n"), "line 2: has text behind the quotes of 'a'");
    EXPECT_EQ(faultIn("x,y,z,name\n1,2,3,\"a\n"), "line 2: has a quote that is not closed");
    EXPECT_THAT(frameOf("x,y,z,name\n1,2,3, \"a\" \n").label("name")->words, ElementsAre("a"));
}

TEST(CsvFile, everyColumnThatBeginsWithoutAValueMayGoOnWithWords) {
    ParticleFrame const frame =
        frameOf("x,y,z,a,b,c,d\n1,2,3,NA,,null,-\n4,5,6,red,green,7,-\n8,9,0,x,y,8,z\n");
    EXPECT_THAT(frame.label("a")->words, ElementsAre("NA", "red", "x"));
    EXPECT_THAT(frame.label("b")->words, ElementsAre("", "green", "y"));
    EXPECT_THAT(frame.label("d")->words, ElementsAre("-", "z"));
    ASSERT_NE(frame.channel("c"), nullptr);
    EXPECT_EQ(frame.channel("c")->values[2], 8);
}
