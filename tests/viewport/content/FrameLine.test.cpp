#include "viewport/content/FrameLine.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/playback/moving_files.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;

namespace {

/// What a window reads of files: also what it needs to show other frames.
Content contentOf(std::vector<std::string> const& files, Options options = {}) {
    options.files = files;
    LoadObserver nobody;
    Result<Content> content = Content::load(options, nobody);
    EXPECT_TRUE(content.isOk()) << content.fault().line();
    return content.isOk() ? content.value() : Content();
}

}  // namespace

TEST(FrameLine, framesOfAFileHaveNumbersAndCaptions) {
    TemporaryFolder const folder;
    Options options;
    options.particles.frame = 2;
    Content const content = contentOf({folder.write("a.dump", moving_files::dumpOf(5))}, options);
    FrameLine const line(content);
    EXPECT_EQ(line.count(), 5U);
    EXPECT_FALSE(line.isAnimation());
    EXPECT_EQ(FrameLine::shownIn(content), 2U);
    EXPECT_EQ(line.frameOf(options), 2U);
    EXPECT_EQ(line.frameOf(Options()), 4U) << "without a number it is the last one";
    EXPECT_EQ(line.caption(3), "step 300, time 1.5");
    options.particles.frame = 5;
    EXPECT_FALSE(line.frameOf(options)) << "there is none";
    options.particles.frame.reset();
    options.time = 1;
    EXPECT_FALSE(line.frameOf(options)) << "each file has times of its own";
    line.choose(options, 1);
    EXPECT_EQ(options.particles.frame, 1U);
    EXPECT_FALSE(options.time);
    EXPECT_EQ(line.frameOf(options), 1U);
}

TEST(FrameLine, posesOfAnAnimationHaveTimes) {
    TemporaryFolder const folder;
    Options options;
    options.time = 1.51;
    Content const content = contentOf({folder.write("a.gltf", moving_files::animatedGltf)}, options);
    FrameLine const line(content);
    EXPECT_EQ(line.count(), 51U) << "2 seconds of 25 poses, and the last one";
    EXPECT_TRUE(line.isAnimation());
    EXPECT_EQ(line.perSecond(), 25);
    EXPECT_EQ(FrameLine::shownIn(content), 38U) << "the nearest one";
    EXPECT_FALSE(line.frameOf(options)) << "it is between two poses";
    EXPECT_FALSE(line.frameOf(Options())) << "a mesh at rest has no time";
    for (std::size_t frame = 0; frame < line.count(); ++frame) {
        line.choose(options, frame);
        EXPECT_EQ(line.frameOf(options), frame);
    }
    EXPECT_EQ(*options.time, 2);
    EXPECT_EQ(line.caption(25), "1 of 2 s");
}

TEST(FrameLine, filesAdvanceTogetherAsFarAsTheShortestOneGoes) {
    TemporaryFolder const folder;
    std::string const longer = folder.write("a.dump", moving_files::dumpOf(5));
    std::string const shorter = folder.write("b.dump", moving_files::dumpOf(3));
    std::string const still = folder.write("c.xyz", "1\n\n0 0 0\n");
    std::string const animated = folder.write("d.gltf", moving_files::animatedGltf);
    FrameLine const line(contentOf({longer, still, animated, shorter}));
    EXPECT_EQ(line.count(), 3U);
    EXPECT_EQ(line.files().size(), 2U) << "a number and a time cannot both be chosen";
    EXPECT_FALSE(line.frameOf(Options())) << "the last frames have different numbers";
    EXPECT_EQ(FrameLine(contentOf({still})).count(), 1U);
    EXPECT_EQ(FrameLine(contentOf({longer, still})).count(), 5U);
}

TEST(FrameLine, aSeriesHasItsFilesAsFrames) {
    TemporaryFolder const folder;
    Options options;
    options.isSeries = true;
    std::vector<std::string> files;
    for (char const* const name : {"a1.obj", "a2.obj", "a3.obj"}) {
        files.push_back(folder.write(name, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
    }
    Content const content = contentOf(files, options);
    EXPECT_EQ(FrameLine(content).count(), 3U);
    EXPECT_EQ(FrameLine::shownIn(content), 2U);
    EXPECT_EQ(FrameLine(content).caption(0), "");
}

TEST(FrameLine, picturesOnTheDiskNeedNoOtherFrames) {
    TemporaryFolder const folder;
    Options options;
    options.pictures.front().out = "a.png";
    EXPECT_TRUE(contentOf({folder.write("a.dump", moving_files::dumpOf(5))}, options).moving.empty());
}
