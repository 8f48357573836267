#include "viewport/playback/FrameSequence.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/common/compressed_texts.h"
#include "tests/viewport/playback/moving_files.h"
#include "viewport/playback/FrameReader.h"

#include <gmock/gmock.h>

#include <stdexcept>

using namespace vellum::viewport;
using moving_files::dumpOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

Progress const nobody;

/// Where the first particle of a frame is.
double placeOf(Result<SequenceFrame> const& frame) {
    EXPECT_TRUE(frame.isOk()) << frame.fault().line();
    return frame.isOk() ? std::get<LoadedFrame>(frame.value()).frame.positions.front().x : -1;
}

FrameSequence sequenceOf(std::string const& path) {
    Result<FrameSequence> const sequence = FrameSequence::ofFile(ParticleFile(path), nobody);
    EXPECT_TRUE(sequence.isOk()) << sequence.fault().line();
    return sequence.value();
}

}  // namespace

TEST(FrameSequence, aFileGivesItsFramesInAnyOrder) {
    TemporaryFolder const folder;
    for (std::string const& content : {dumpOf(4), compressed_texts::gzip(dumpOf(4))}) {
        FrameSequence const sequence = sequenceOf(folder.write("a.dump", content));
        EXPECT_EQ(sequence.count(), 4U);
        EXPECT_THAT(sequence.timesteps(), ElementsAre(0, 100, 200, 300));
        EXPECT_THAT(sequence.times(), ElementsAre(0.0, 0.5, 1.0, 1.5));
        EXPECT_TRUE(sequence.mayReadAhead());
        for (std::size_t const number : {2U, 0U, 3U, 1U, 2U}) {
            Result<SequenceFrame> const frame = sequence.load(number, nobody);
            EXPECT_EQ(placeOf(frame), static_cast<double>(number));
            EXPECT_EQ(std::get<LoadedFrame>(frame.value()).number, number);
            EXPECT_TRUE(std::get<LoadedFrame>(frame.value()).times.empty());
        }
        EXPECT_THAT(sequence.load(4, nobody).fault().message, HasSubstr("no frame 4"));
    }
    std::string const xyz = folder.write("a.xyz", "1\n\nH 7 0 0\n1\n\nH 8 0 0\n");
    EXPECT_EQ(placeOf(sequenceOf(xyz).load(1, nobody)), 8);
    EXPECT_FALSE(FrameSequence::ofFile(ParticleFile(folder.file("none")), nobody).isOk());
}

TEST(FrameSequence, aFileThatIsCutOffGivesItsCompleteFramesAndAWarning) {
    TemporaryFolder const folder;
    std::string const text = dumpOf(3);
    FrameSequence const sequence = sequenceOf(folder.write("a.dump", text.substr(0, text.size() - 20)));
    EXPECT_EQ(sequence.count(), 2U);
    EXPECT_THAT(sequence.warning(), HasSubstr("cut off in frame 2"));
}

TEST(FrameSequence, aSeriesGivesOneFrameForEachFile) {
    TemporaryFolder const folder;
    std::vector<std::string> files;
    for (int const number : {5, 10, 100}) {
        files.push_back(folder.write("a." + std::to_string(number) + ".xyz",
                                     "1\n\nH " + std::to_string(number) + " 0 0\n"));
    }
    FrameSequence const sequence =
        FrameSequence::ofSeries(ParticleSeries::of(files).value(), ParticleFormat::XYZ);
    EXPECT_EQ(sequence.count(), 3U);
    EXPECT_TRUE(sequence.times().empty());
    EXPECT_EQ(placeOf(sequence.load(2, nobody)), 100);
    EXPECT_EQ(placeOf(sequence.load(0, nobody)), 5);
    EXPECT_FALSE(sequence.load(3, nobody).isOk());
}

TEST(FrameSequence, anAnimationGivesItsPosesFromStartToEnd) {
    TemporaryFolder const folder;
    MeshFile const file(folder.write("a.gltf", moving_files::animatedGltf));
    FrameSequence const sequence = FrameSequence::ofAnimation(file, ImportLimits{}, 2, 5);
    EXPECT_EQ(sequence.count(), 11U);
    EXPECT_FALSE(sequence.mayReadAhead());
    for (std::size_t const number : {0U, 5U, 10U}) {
        Result<SequenceFrame> const frame = sequence.load(number, nobody);
        ASSERT_TRUE(frame.isOk()) << frame.fault().line();
        EXPECT_NEAR(std::get<MeshData>(frame.value()).box().min.x, 0.4 * static_cast<double>(number), 1e-5);
    }
    EXPECT_EQ(FrameSequence::ofAnimation(file, ImportLimits{}, 0, 25).count(), 1U);
    EXPECT_EQ(FrameSequence::ofAnimation(file, ImportLimits{}, 0.99, 25).count(), 25U);
}

TEST(FrameSequence, aProgressThatThrowsEndsTheLoadAndNothingElse) {
    TemporaryFolder const folder;
    FrameSequence const sequence = sequenceOf(folder.write("a.dump", dumpOf(3)));
    for (std::size_t number = 0; number < 3; ++number) {
        EXPECT_THROW(static_cast<void>(sequence.load(
                         number, [](std::uint64_t, std::uint64_t) { throw std::runtime_error("enough"); })),
                     std::runtime_error);
    }
    EXPECT_EQ(placeOf(sequence.load(1, nobody)), 1);
}

// == FrameReader ==

TEST(FrameReader, framesComeFromItsThreadOrFromTheCaller) {
    TemporaryFolder const folder;
    FrameSequence const sequence = sequenceOf(folder.write("a.dump", dumpOf(5)));
    for (FrameReader::Reading const reading :
         {FrameReader::Reading::AHEAD, FrameReader::Reading::WHEN_TAKEN}) {
        FrameReader reader(sequence, FrameReader::STANDARD_BUDGET, reading);
        for (std::size_t const number : {3U, 2U, 1U}) {
            reader.want({number, number - 1});
            EXPECT_EQ(placeOf(*reader.wait()), static_cast<double>(number));
        }
    }
}

TEST(FrameReader, posesAreReadByTheCaller) {
    TemporaryFolder const folder;
    MeshFile const file(folder.write("a.gltf", moving_files::animatedGltf));
    FrameReader reader(FrameSequence::ofAnimation(file, ImportLimits{}, 2, 1));
    reader.want({1, 2});
    std::optional<Result<SequenceFrame>> const frame = reader.take();
    ASSERT_TRUE(frame && frame->isOk());
    EXPECT_NEAR(std::get<MeshData>(frame->value()).box().min.x, 2, 1e-5);
    EXPECT_EQ(reader.heldBytes(), 0U);
}

TEST(FrameReader, theMemoryOfFramesIsCounted) {
    LoadedFrame loaded;
    std::uint64_t const empty = bytesOf(SequenceFrame(loaded));
    loaded.frame.positions.resize(1000);
    loaded.frame.channels.push_back({"a", ValueList<double>(1000), ""});
    loaded.frame.labels.push_back({"b", {"H"}, ValueList<std::uint32_t>(1000), true});
    EXPECT_GE(bytesOf(SequenceFrame(loaded)), empty + 36'000);
    MeshData mesh;
    mesh.positions.resize(1000);
    EXPECT_GE(bytesOf(SequenceFrame(mesh)), 24'000U);
}
