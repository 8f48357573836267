#include "viewport/files/particles/LammpsDump.h"

#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::dump;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

std::string frameOf(std::string const& atoms, std::string const& count, std::string const& names) {
    return "ITEM: TIMESTEP\n7\nITEM: NUMBER OF ATOMS\n" + count +
           "\nITEM: BOX BOUNDS pp pp pp\n0 1\n0 1\n0 1\nITEM: ATOMS " + names + "\n" + atoms;
}

std::string faultIn(std::string const& text) {
    return faultOf(readLammpsDump(text, std::nullopt, nobody));
}

ParticleFrame onlyFrame(std::string const& text) {
    Result<LoadedFrame> const result = readLammpsDump(text, std::nullopt, nobody);
    EXPECT_EQ(faultOf(result), "");
    return result.isOk() && result.value().count == 1 ? result.value().frame : ParticleFrame();
}

}  // namespace

TEST(LammpsDump, columnsAreFoundByTheirNamesAndParticlesSortedByTheirIds) {
    Result<LoadedFrame> const result = readLammpsDump(dump, 0, nobody);
    ASSERT_EQ(faultOf(result), "");
    EXPECT_EQ(result.value().warning, "");
    EXPECT_EQ(result.value().count, 2U);
    EXPECT_EQ(result.value().number, 0U);
    EXPECT_THAT(result.value().timesteps, ElementsAre(100, 200));
    EXPECT_THAT(result.value().times, ElementsAre(std::optional<double>(0.5), std::nullopt));
    ParticleFrame const& frame = result.value().frame;
    EXPECT_EQ(frame.timestep, 100);
    EXPECT_EQ(frame.time, 0.5);
    EXPECT_THAT(frame.positions, ElementsAre(Point{1, 1.5, -2}, Point{10.25, 2.5, -3}, Point{3, 0.5, -1}));
    EXPECT_THAT(velocitiesOf(frame), ElementsAre(Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}));
    ASSERT_EQ(frame.channels.size(), 6U);
    EXPECT_THAT(frame.channel("id")->values, ElementsAre(1, 2, 3));
    EXPECT_THAT(frame.channel("type")->values, ElementsAre(2, 1, 1));
    EXPECT_THAT(frame.channel("c_pe")->values, ElementsAre(-8.5, 1e-3, -7.25));
    EXPECT_EQ(frame.channel("c_ke"), nullptr);
    ASSERT_TRUE(frame.box);
    EXPECT_TRUE((frame.box->origin == Vector3<double>{0, 0, -5}));
    EXPECT_TRUE((frame.box->edges[1] == Vector3<double>{0, 20, 0}));
    EXPECT_TRUE((frame.box->edges[2] == Vector3<double>{0, 0, 10}));
}

TEST(LammpsDump, scaledPositionsArePutIntoTheTiltedBox) {
    Result<LoadedFrame> const result = readLammpsDump(dump, std::nullopt, nobody);
    ASSERT_EQ(faultOf(result), "");
    EXPECT_EQ(result.value().number, 1U);
    ParticleFrame const& frame = result.value().frame;
    // xy = 2, xz = -1, yz = 3: the upright box around it begins 1 further left and ends 2 further right, and
    // ends 3 further back.
    ASSERT_TRUE(frame.box);
    EXPECT_TRUE((frame.box->origin == Vector3<double>{0, 0, 0}));
    EXPECT_TRUE((frame.box->edges[0] == Vector3<double>{10, 0, 0}));
    EXPECT_TRUE((frame.box->edges[1] == Vector3<double>{2, 20, 0}));
    EXPECT_TRUE((frame.box->edges[2] == Vector3<double>{-1, 3, 8}));
    EXPECT_THAT(frame.positions, ElementsAre(Point{-1, 3, 8}, Point{5.5, 11.5, 4}));
    EXPECT_TRUE(velocitiesOf(frame).empty());
    EXPECT_FALSE(frame.time);
}

TEST(LammpsDump, boxesOfGeneralShapeAreGivenByTheirEdges) {
    ParticleFrame const frame =
        onlyFrame("ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n1\nITEM: BOX BOUNDS abc origin pp pp pp\n"
                  "1 2 3 100\n4 5 6 200\n7 8 9 300\nITEM: ATOMS xsu ysu zsu\n1 0 2\n");
    ASSERT_TRUE(frame.box);
    EXPECT_TRUE((frame.box->origin == Vector3<double>{100, 200, 300}));
    EXPECT_TRUE((frame.box->edges[2] == Vector3<double>{7, 8, 9}));
    EXPECT_THAT(frame.positions, ElementsAre(Point{115, 218, 321}));
}

TEST(LammpsDump, facesTellAlongWhichEdgesABoxIsPeriodic) {
    using Flags = std::array<bool, 3>;
    struct Row {
        char const* words;
        char const* lines;
        Flags flags;
    };
    for (Row const& row : {Row{" pp ff pp", "0 1\n0 1\n0 1\n", {true, false, true}},
                           {" xy xz yz ss pp fm", "0 1 0\n0 1 0\n0 1 0\n", {false, true, false}},
                           {" abc origin pp pp ff", "1 0 0 0\n0 1 0 0\n0 0 1 0\n", {true, true, false}},
                           {"", "0 1\n0 1\n0 1\n", {true, true, true}},
                           {" xy xz yz", "0 1 0\n0 1 0\n0 1 0\n", {true, true, true}}}) {
        ParticleFrame const frame =
            onlyFrame(std::string("ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n1\nITEM: BOX BOUNDS") +
                      row.words + "\n" + row.lines + "ITEM: ATOMS x y z\n0 0 0\n");
        ASSERT_TRUE(frame.box);
        EXPECT_EQ(frame.box->isPeriodic, row.flags) << row.words;
    }
}

TEST(LammpsDump, scaledPositionsBehindTheBoxStayThere) {
    std::string const head = "ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n1\n";
    std::string const upright = "ITEM: BOX BOUNDS pp pp pp\n-1 3\n0 2\n5 6\n";
    std::string const tilted = "ITEM: BOX BOUNDS xy xz yz pp pp pp\n0 3 1\n0 2 0\n0 1 0\n";
    struct Row {
        std::string text;
        Point place;
    };
    for (Row const& row : {Row{upright + "ITEM: ATOMS xs ys zs\n0.5 0.5 0.5\n", {1, 1, 5.5}},
                           {upright + "ITEM: ATOMS xsu ysu zsu\n1.5 -0.5 2\n", {5, -1, 7}},
                           {upright + "ITEM: ATOMS xu yu zu\n1.5 -0.5 2\n", {1.5, -0.5, 2}},
                           {tilted + "ITEM: ATOMS xs ys zs\n0.5 0.5 0\n", {1.5, 1, 0}},
                           {tilted + "ITEM: ATOMS xsu ysu zsu\n1 2 -1\n", {4, 4, -1}},
                           {tilted + "ITEM: ATOMS x y z\n1 2 -1\n", {1, 2, -1}}}) {
        EXPECT_THAT(onlyFrame(head + row.text).positions, ElementsAre(row.place)) << row.text;
    }
}

TEST(LammpsDump, unitsOfTheFirstFrameAreThoseOfAll) {
    std::string const frame = frameOf("1 2 3 4 5 6 7\n", "1", "x y z vx fx q c_pe");
    std::vector<ParticleFrame> const frames =
        framesOf(readLammpsDump, "ITEM: UNITS\nmetal\n" + frame + frame);
    ASSERT_EQ(frames.size(), 2U);
    for (ParticleFrame const& each : frames) {
        EXPECT_EQ(each.channel("vx")->unit, "Å/ps");
        EXPECT_EQ(each.channel("fx")->unit, "eV/Å");
        EXPECT_EQ(each.channel("q")->unit, "e");
        EXPECT_EQ(each.channel("c_pe")->unit, "");
    }
    EXPECT_EQ(onlyFrame("ITEM: UNITS\nlj\n" + frame).channel("vx")->unit, "");
    EXPECT_EQ(onlyFrame(frame).channel("vx")->unit, "");
}

TEST(LammpsDump, wrappedPositionsComeBeforeUnwrappedAndScaledOnes) {
    ParticleFrame const frame = onlyFrame(frameOf("1 2 3 4 5 6 7 8 9\n", "1", "xs ys zs xu yu zu x y z"));
    EXPECT_THAT(frame.positions, ElementsAre(Point{7, 8, 9}));
    EXPECT_EQ(frame.channels.size(), 6U);
    EXPECT_THAT(onlyFrame(frameOf("1 2 3 4 5 6\n", "1", "xs ys zs xu yu zu")).positions,
                ElementsAre(Point{4, 5, 6}));
    // One coordinate of a kind is not enough to take it.
    EXPECT_THAT(onlyFrame(frameOf("9 4 5 6\n", "1", "x xs ys zs")).positions, ElementsAre(Point{4, 5, 6}));
}

TEST(LammpsDump, columnsOfTextAreLabels) {
    ParticleFrame const frame =
        onlyFrame(frameOf("Ar 0 0 0 2 In\nNe 1 1 1 3 1\n", "2", "element x y z q name"));
    ASSERT_EQ(frame.channels.size(), 1U);
    EXPECT_THAT(frame.channel("q")->values, ElementsAre(2, 3));
    ASSERT_EQ(frame.labels.size(), 2U);
    ASSERT_EQ(frame.elements(), frame.labels.data());
    EXPECT_THAT(frame.elements()->words, ElementsAre("Ar", "Ne"));
    EXPECT_THAT(frame.elements()->indices, ElementsAre(0, 1));
    EXPECT_THAT(frame.label("name")->words, ElementsAre("In", "1"));
    EXPECT_FALSE(frame.label("name")->areElements);
    EXPECT_EQ(frame.label("q"), nullptr);
}

TEST(LammpsDump, withoutIdsTheOrderIsTheFiles) {
    EXPECT_THAT(onlyFrame(frameOf("2 0 0\n1 0 0\n", "2", "x y z")).positions,
                ElementsAre(Point{2, 0, 0}, Point{1, 0, 0}));
}

TEST(LammpsDump, idsFarApartAreSortedToo) {
    ParticleFrame const frame =
        onlyFrame(frameOf("9007199254740992 1 0 0\n-5 2 0 0\n70 3 0 0\n-5 4 0 0\n", "4", "id x y z"));
    EXPECT_THAT(frame.positions, ElementsAre(Point{2, 0, 0}, Point{4, 0, 0}, Point{3, 0, 0}, Point{1, 0, 0}));
}

TEST(LammpsDump, numbersMayBeSignedHugeTinyOrNone) {
    ParticleFrame const frame = onlyFrame(
        frameOf("+1 -1e300 1e-300 nan 1e999\r\n-1e999 1e-999 inf -1e-999 0.1\r\n", "2", "x y z q r"));
    ASSERT_EQ(frame.positions.size(), 2U);
    EXPECT_EQ(frame.positions[0], (Point{1, -1e300, 1e-300}));
    EXPECT_EQ(frame.positions[1], (Point{-INFINITY, 0, INFINITY}));
    EXPECT_TRUE(std::isnan(frame.channel("q")->values[0]));
    EXPECT_EQ(frame.channel("r")->values[0], INFINITY);
    EXPECT_EQ(frame.channel("r")->values[1], 0.1);
}

TEST(LammpsDump, blanksTabulatorsAndEmptyLinesDoNotMatter) {
    EXPECT_THAT(onlyFrame("\n" + frameOf("  1\t2   3 \t\r\n", "1 ", "x\ty z ") + "\n \r\n").positions,
                ElementsAre(Point{1, 2, 3}));
}

TEST(LammpsDump, framesMayHaveNoParticles) {
    std::vector<ParticleFrame> const frames = framesOf(
        readLammpsDump, frameOf("", "0", "id x y z vx vy vz") + frameOf("1 2 3 4\n", "1", "id x y z"));
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_TRUE(frames[0].positions.empty());
    EXPECT_EQ(frames[1].positions.size(), 1U);
}

TEST(LammpsDump, damageIsReportedWithItsLineAndReason) {
    EXPECT_EQ(faultIn(frameOf("1 2 3\n1 two 3\n", "2", "x y z")),
              "line 11: 'two' in column 'y' is not a number");
    EXPECT_EQ(faultIn(frameOf("1 2 3\n1 2.5.1 3\n", "2", "x y z")),
              "line 11: '2.5.1' in column 'y' is not a number");
    EXPECT_EQ(faultIn(frameOf("1 2\n", "1", "x y z")), "line 10: has 2 of 3 values");
    EXPECT_EQ(faultIn(frameOf("1 2 3 4\n", "1", "x y z")), "line 10: has more than 3 values");
    EXPECT_EQ(faultIn(frameOf("1 2 3\n4 5 6\n", "1", "x y z")),
              "line 11: 'ITEM:' is expected in place of '4 5 6'");
    EXPECT_EQ(faultIn(frameOf("1 2 3\n", "2", "x y z") + frameOf("1 2 3\n", "1", "x y z")),
              "line 11: the frame has fewer than the 2 atoms that it declares");
    EXPECT_EQ(faultIn(frameOf("1.5 2 3 4\n", "1", "id x y z")),
              "line 10: the particle's id is not a whole number");
    EXPECT_EQ(faultIn(frameOf("nan 2 3 4\n", "1", "id x y z")),
              "line 10: the particle's id is not a whole number");
    EXPECT_THAT(faultIn(frameOf("1 2\n", "1", "x y")), HasSubstr("line 9: no columns give positions"));
    EXPECT_EQ(faultIn(frameOf("", "many", "x y z")), "line 4: 'many' is not a number of atoms");
    EXPECT_EQ(faultIn(frameOf("", "-3", "x y z")), "line 4: '-3' is not a number of atoms");
    EXPECT_EQ(faultIn("ITEM: TIMESTEP\nnow\n"), "line 2: 'now' is not a time step");
    EXPECT_EQ(faultIn("ITEM: TIME\nnow\n"), "line 2: 'now' is not a time");
    EXPECT_EQ(faultIn("ITEM: TIME\n\n"), "line 2: '' is not a time");
    EXPECT_EQ(faultIn("ITEM: ENTRIES index\n"), "line 1: 'ITEM: ENTRIES index' is not understood");
    EXPECT_EQ(faultIn("ITEM: BOX BOUNDS pp pp pp\n0\n"),
              "line 2: '0' are not the 2 numbers of the box's limits");
    EXPECT_EQ(faultIn("ITEM: BOX BOUNDS pp pp pp\n0 1\n0 1 0.5\n"),
              "line 3: '0 1 0.5' are not the 2 numbers of the box's limits")
        << "a tilt that the item does not name";
    EXPECT_EQ(faultIn("ITEM: BOX BOUNDS xy xz yz pp pp pp\n0 1 0 7\n"),
              "line 2: '0 1 0 7' are not the 3 numbers of the box's limits");
    EXPECT_EQ(faultIn("ITEM: BOX BOUNDS abc origin pp pp pp\n1 0 0 0 5\n"),
              "line 2: '1 0 0 0 5' are not the 4 numbers of the box's limits");
    EXPECT_EQ(faultIn("ITEM: TIME\n2.5 3\n"), "line 2: '2.5' is not a time");
    EXPECT_EQ(faultIn("ITEM: ATOMS x y z\n"), "line 1: the frame's time step is missing");
    EXPECT_EQ(faultIn("ITEM: TIMESTEP\n1\nITEM: ATOMS x y z\n"),
              "line 3: the frame's number of atoms is missing");
    EXPECT_EQ(faultIn("ITEM: TIMESTEP\n1\nITEM: NUMBER OF ATOMS\n1\nITEM: ATOMS xs ys zs\n0 0 0\n"),
              "line 5: the positions are scaled, and the frame has no box");
    EXPECT_EQ(faultIn(""), "holds no frame");
}

TEST(LammpsDump, countsBeyondTheFileTakeNoMemory) {
    EXPECT_EQ(
        faultIn(frameOf("1 2 3\n", "18446744073709551615", "x y z")),
        "line 10: the text ends after 1 of 18446744073709551615 particles; the file is cut off in frame 0");
    EXPECT_EQ(faultIn(frameOf("1 2 3\n", "99999999999999999999", "x y z")),
              "line 4: '99999999999999999999' is not a number of atoms");
}

TEST(LammpsDump, ofADumpCutOffTheCompleteFramesAreGiven) {
    std::size_t const second = dump.find("ITEM: TIMESTEP\n200");
    ParticleFrame const whole = readLammpsDump(dump, 0, nobody).value().frame;
    for (std::size_t size = 0; size < dump.size(); ++size) {
        // A copy of exactly this size, so that a memory checker sees every byte read behind the end.
        std::vector<char> const bytes(dump.begin(), dump.begin() + static_cast<std::ptrdiff_t>(size));
        Result<LoadedFrame> const result = readLammpsDump({bytes.data(), bytes.size()}, 0, nobody);
        if (size + 1 < second) {
            EXPECT_FALSE(result.isOk() && result.value().warning.empty()) << size;
            continue;
        }
        ASSERT_TRUE(result.isOk()) << size << ' ' << faultOf(result);
        EXPECT_EQ(result.value().frame.positions, whole.positions);
        EXPECT_EQ(result.value().frame.channels[5].values, whole.channels[5].values);
        EXPECT_EQ(result.value().warning.empty(), size == second) << size;
        EXPECT_EQ(result.value().count, size < dump.size() - 1 ? 1U : 2U) << size;
    }
    EXPECT_EQ(readLammpsDump(dump.substr(0, dump.size() - 6), std::nullopt, nobody).value().warning,
              "line 27: has 1 of 4 values; the file is cut off in frame 1, which is left out");
}

TEST(LammpsDump, everySingleByteMayBeWrong) {
    for (std::size_t place = 0; place < dump.size(); ++place) {
        for (char const& wrong : {'\0', '\n', ' ', '9', '-', '\xFF'}) {
            std::string damaged = dump;
            damaged[place] = wrong;
            Result<LoadedFrame> const result = readLammpsDump(damaged, std::nullopt, nobody);
            EXPECT_TRUE(result.isOk() ? result.value().count > 0 : !result.fault().message.empty());
        }
    }
}

TEST(LammpsDump, progressGoesFromTheFirstToTheLastByte) {
    std::string atoms;
    for (int i = 0; i < 10000; ++i) {
        atoms += "1 2 3\n";
    }
    std::string const text = frameOf(atoms, "10000", "x y z");
    std::vector<std::uint64_t> told;
    Progress const listener = [&](std::uint64_t const& done, std::uint64_t const& all) {
        EXPECT_EQ(all, text.size());
        told.push_back(done);
    };
    ASSERT_TRUE(readLammpsDump(text, std::nullopt, listener).isOk());
    EXPECT_GE(told.size(), 3U);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_LE(told.back(), text.size());
}

// == One frame of several ==

TEST(LammpsDump, theFrameThatIsAskedForIsRead) {
    std::string text;
    for (char const* const atom : {"1 0 0\n", "2 0 0\n", "3 0 0\n", "4 0 0\n"}) {
        text += frameOf(atom, "1", "x y z");
    }
    std::vector<ParticleFrame> const frames = framesOf(readLammpsDump, text);
    ASSERT_EQ(frames.size(), 4U);
    for (std::size_t number = 0; number < 4; ++number) {
        EXPECT_THAT(frames[number].positions, ElementsAre(Point{static_cast<double>(number + 1), 0, 0}));
    }
    EXPECT_EQ(readLammpsDump(text, std::nullopt, nobody).value().frame.positions[0].x, 4);
    Result<LoadedFrame> const behind = readLammpsDump(text, 4, nobody);
    ASSERT_EQ(faultOf(behind), "");
    EXPECT_EQ(behind.value().count, 4U);
    EXPECT_TRUE(behind.value().frame.positions.empty());
}

TEST(LammpsDump, aSmallLastFrameIsReadAfterALargeOne) {
    std::string atoms;
    for (int i = 0; i < 100; ++i) {
        atoms += std::to_string(i) + " 2 3\n";
    }
    // The large frame leaves too little text for another one of its size and is taken for the last one at
    // first.
    std::string const text = frameOf(atoms, "100", "x y z") + frameOf("7 8 9\n", "1", "x y z");
    std::vector<ParticleFrame> const frames = framesOf(readLammpsDump, text);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].positions.size(), 100U);
    Result<LoadedFrame> const last = readLammpsDump(text, std::nullopt, nobody);
    EXPECT_THAT(last.value().frame.positions, ElementsAre(Point{7, 8, 9}));
}

TEST(LammpsDump, onlyTheFrameThatIsShownMustHoldNumbers) {
    std::string const good = frameOf("1 2 3\n", "1", "x y z");
    std::string const bad = frameOf("1 two 3\n", "1", "x y z");
    for (std::string const& text : {bad + good, bad + good + good, good + bad + good}) {
        EXPECT_EQ(faultIn(text), "");
    }
    EXPECT_EQ(faultOf(readLammpsDump(good + bad + good, 1, nobody)),
              "line 20: 'two' in column 'y' is not a number");
    EXPECT_EQ(faultOf(readLammpsDump(good + bad + good, 0, nobody)), "");
    EXPECT_EQ(faultIn(good + bad), "line 20: 'two' in column 'y' is not a number");
}

TEST(LammpsDump, headsAndCountsOfAllFramesAreChecked) {
    std::string const good = frameOf("1 2 3\n", "1", "x y z");
    for (std::size_t number = 0; number < 3; ++number) {
        EXPECT_EQ(faultOf(readLammpsDump(good + frameOf("1 2 3\n", "2", "x y z") + good, number, nobody)),
                  "line 21: the frame has fewer than the 2 atoms that it declares");
        EXPECT_EQ(
            faultOf(readLammpsDump(good + frameOf("1 2 3\n4 5 6\n", "1", "x y z") + good, number, nobody)),
            "line 21: 'ITEM:' is expected in place of '4 5 6'");
        EXPECT_EQ(faultOf(readLammpsDump(good + frameOf("", "some", "x y z") + good, number, nobody)),
                  "line 14: 'some' is not a number of atoms");
    }
}

TEST(LammpsDump, anElementMayBeNamedAsTheMarkOfAnItem) {
    std::string const text = frameOf("ITEM: 1 2 3\n", "1", "element x y z");
    EXPECT_EQ(framesOf(readLammpsDump, text + text).size(), 2U);
}

TEST(LammpsDump, progressNeverGoesBack) {
    std::string atoms;
    for (int i = 0; i < 20000; ++i) {
        atoms += "1 2 3\n";
    }
    std::string const large = frameOf(atoms, "20000", "x y z");
    std::string const bad = frameOf(atoms + "1 2 x\n", "20001", "x y z");
    std::string const small = frameOf("1 2 3\n", "1", "x y z");
    for (std::string const& text : {large + large, large + small, bad + small, large + large + large}) {
        for (std::optional<std::size_t> const& number : {std::optional<std::size_t>(), {1}}) {
            std::vector<std::uint64_t> told;
            Progress const listener = [&](std::uint64_t done, std::uint64_t) { told.push_back(done); };
            EXPECT_EQ(faultOf(readLammpsDump(text, number, listener)), "");
            EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
            EXPECT_GE(told.size(), 4U);
        }
    }
}
