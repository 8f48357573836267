#include "viewport/loading/FramePlayer.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/playback/moving_files.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

/// A player of some files, and the wait for its frames.
class FramePlayer_test : public testing::Test {
protected:
    void open(std::vector<std::string> const& files) {
        options.files = files;
        LoadObserver nobody;
        Result<Content> content = Content::load(options, nobody);
        ASSERT_TRUE(content.isOk()) << content.fault().line();
        player = std::make_unique<FramePlayer>(options, content.value());
    }

    void openDump(int frames) { open({folder.write("a.dump", moving_files::dumpOf(frames))}); }

    LoadOutcome outcome() const {
        for (int i = 0; i < 20'000; ++i) {
            if (std::optional<LoadOutcome> outcome = player->poll()) {
                return std::move(*outcome);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ADD_FAILURE() << "no frame came within 20 seconds";
        return {};
    }

    /// Where the first particle or vertex of the next frame is.
    double nextX() const {
        LoadOutcome const ended = outcome();
        EXPECT_TRUE(ended.loaded) << ended.fault.value_or(Fault{}).line();
        if (!ended.loaded) {
            return -1;
        }
        Content const& content = *ended.loaded->content;
        return content.particles.empty() ? content.meshes.at(0).positions.at(0).x
                                         : content.particles.at(0).positions.at(0).x;
    }

    TemporaryFolder const folder;
    Options options;
    std::unique_ptr<FramePlayer> player;
};

}  // namespace

TEST_F(FramePlayer_test, givesEachFrameOnceThatIsAskedFor) {
    openDump(6);
    EXPECT_FALSE(player->poll());
    EXPECT_FALSE(player->awaited());
    for (std::size_t const frame : {0, 1, 2, 5, 4, 0}) {
        player->show(frame);
        EXPECT_EQ(player->awaited(), frame);
        EXPECT_EQ(nextX(), static_cast<double>(frame));
        EXPECT_FALSE(player->awaited());
        EXPECT_FALSE(player->poll());
    }
}

TEST_F(FramePlayer_test, aFrameIsWhatLoadingItAnewGives) {
    openDump(6);
    player->show(3);
    LoadOutcome const played = outcome();
    ASSERT_TRUE(played.loaded);
    EXPECT_EQ(played.loaded->options.particles.frame, 3U);
    EXPECT_EQ(FrameLine::shownIn(*played.loaded->content), 3U);
    Options asked = options;
    asked.particles.frame = 3;
    LoadObserver nobody;
    Content content = Content::load(asked, nobody).value();
    EXPECT_EQ(played.loaded->content->frameCounts, content.frameCounts);
    EXPECT_EQ(played.loaded->content->particles[0].timestep, content.particles[0].timestep);
    Subject const anew = std::move(Subject::prepare(asked, content, nobody).value());
    EXPECT_EQ(played.loaded->subject.look.scale->range.high, anew.look.scale->range.high);
    EXPECT_EQ(played.loaded->subject.scene.unitsPerFileUnit(), anew.scene.unitsPerFileUnit());
}

TEST_F(FramePlayer_test, ofFramesThatAreAskedForMeanwhileTheLastOneFollows) {
    openDump(40);
    player->show(7);
    for (std::size_t frame = 8; frame < 30; ++frame) {
        player->show(frame);
    }
    EXPECT_EQ(player->awaited(), 29U);
    EXPECT_EQ(nextX(), 7) << "something is shown however fast frames are asked for";
    EXPECT_EQ(player->awaited(), 29U);
    EXPECT_EQ(nextX(), 29);
    EXPECT_FALSE(player->awaited());
}

TEST_F(FramePlayer_test, otherOptionsHoldForAllFramesFromThenOn) {
    openDump(6);
    player->show(1);
    Options other = options;
    other.particles.percent = 50;
    other.particles.range = ValueRange{-7, 70};
    player->setOptions(other);
    LoadOutcome const first = outcome();
    ASSERT_TRUE(first.loaded);
    EXPECT_EQ(first.loaded->subject.look.scale->range.low, -7) << "the frame on its way is begun anew";
    player->show(2);
    LoadOutcome const second = outcome();
    ASSERT_TRUE(second.loaded);
    EXPECT_EQ(second.loaded->subject.look.scale->range.low, -7) << "and so is the one read ahead";
    EXPECT_EQ(second.loaded->content->particles[0].positions[0].x, 2);
}

TEST_F(FramePlayer_test, aForgottenFrameDoesNotCome) {
    openDump(6);
    player->show(1);
    player->forget();
    EXPECT_FALSE(player->awaited());
    player->show(4);
    EXPECT_EQ(nextX(), 4);
    EXPECT_FALSE(player->poll());
}

TEST_F(FramePlayer_test, framesOfASeriesAreReadFromTheirFiles) {
    options.isSeries = true;
    std::vector<std::string> files;
    for (char const* const number : {"1", "2", "3"}) {
        files.push_back(folder.write(std::string("a") + number + ".obj",
                                     "v " + std::string(number) + " 0 0\nv 9 0 0\nv 0 1 0\nf 1 2 3\n"));
    }
    open(files);
    player->show(0);
    EXPECT_EQ(nextX(), 1);
    std::filesystem::remove(files[1]);
    player->setOptions(options);  // It may have been read ahead.
    player->show(1);
    LoadOutcome const missing = outcome();
    EXPECT_FALSE(missing.loaded);
    ASSERT_TRUE(missing.fault);
    EXPECT_THAT(missing.fault->line(), HasSubstr("a2.obj: cannot be opened"));
    player->show(2);
    EXPECT_EQ(nextX(), 3);
}

TEST_F(FramePlayer_test, posesOfAnAnimationAreFrames) {
    open({folder.write("a.gltf", moving_files::animatedGltf)});
    player->show(25);
    EXPECT_DOUBLE_EQ(nextX(), 2) << "half the way";
    EXPECT_FALSE(player->awaited());
}

TEST_F(FramePlayer_test, aFileThatHasBecomeShorterIsAFault) {
    openDump(400);
    std::filesystem::resize_file(folder.file("a.dump"), 100);
    player->show(399);
    LoadOutcome const ended = outcome();
    EXPECT_FALSE(ended.loaded);
    EXPECT_THAT(ended.fault.value_or(Fault{}).line(), HasSubstr("has become shorter"));
}
