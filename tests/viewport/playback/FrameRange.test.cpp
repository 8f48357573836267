#include "viewport/playback/FrameRange.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;
using testing::ElementsAre;

namespace {

std::vector<std::size_t> framesOf(std::string const& text, std::size_t count) {
    std::optional<FrameRange> const range = FrameRange::parse(text);
    EXPECT_TRUE(range) << text;
    Result<std::vector<std::size_t>> const frames = range->of(count);
    EXPECT_TRUE(frames.isOk()) << frames.fault().message;
    return frames.isOk() ? frames.value() : std::vector<std::size_t>();
}

}  // namespace

TEST(FrameRange, bothEndsBelongToIt) {
    EXPECT_THAT(framesOf("2:5", 10), ElementsAre(2, 3, 4, 5));
    EXPECT_THAT(framesOf("0:9:3", 10), ElementsAre(0, 3, 6, 9));
    EXPECT_THAT(framesOf("0:8:3", 10), ElementsAre(0, 3, 6));
    EXPECT_THAT(framesOf("4", 10), ElementsAre(4));
    EXPECT_THAT(framesOf("4:4", 10), ElementsAre(4));
    EXPECT_THAT(framesOf("0:2:100", 10), ElementsAre(0));
}

TEST(FrameRange, endsThatAreLeftOutAreThoseOfTheSequence) {
    EXPECT_THAT(framesOf(":", 3), ElementsAre(0, 1, 2));
    EXPECT_THAT(framesOf("::2", 5), ElementsAre(0, 2, 4));
    EXPECT_THAT(framesOf("1:", 3), ElementsAre(1, 2));
    EXPECT_THAT(framesOf(":1", 3), ElementsAre(0, 1));
    EXPECT_THAT(framesOf(":", 1), ElementsAre(0));
    EXPECT_THAT(framesOf("1:2:", 4), ElementsAre(1, 2));
    EXPECT_THAT(framesOf("::", 2), ElementsAre(0, 1));
}

TEST(FrameRange, aNegativeStepGoesBackward) {
    EXPECT_THAT(framesOf("::-1", 3), ElementsAre(2, 1, 0));
    EXPECT_THAT(framesOf("7:2:-2", 10), ElementsAre(7, 5, 3));
    EXPECT_THAT(framesOf("2::-1", 10), ElementsAre(2, 1, 0));
    EXPECT_THAT(framesOf(":8:-1", 10), ElementsAre(9, 8));
}

TEST(FrameRange, framesThatDoNotExistAreFaults) {
    for (char const* const text : {"3", "0:3", "3:", ":3", "3:0:-1", ":3:-1", "2000000000:"}) {
        Result<std::vector<std::size_t>> const frames = FrameRange::parse(text)->of(3);
        EXPECT_FALSE(frames.isOk()) << text;
    }
    EXPECT_EQ(FrameRange::parse("0:2000000000")->of(3).fault().message,
              "has no frame 2000000000; its last one is 2");
}

TEST(FrameRange, otherTextsAreNone) {
    for (char const* const text : {"", "a", "1-2", "1:2:0", "1:2:3:4", "2:1", "1:2:-1", "-1:2", "1.5", " 1",
                                   "1:2:x", "1:2:99999999999999999999", "+1"}) {
        EXPECT_FALSE(FrameRange::parse(text)) << text;
    }
}
