#include "viewport/playback/PlaybackClock.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace vellum::viewport;
using testing::ElementsAre;

TEST(PlaybackClock, framesFollowTheTimeThatPasses) {
    PlaybackClock clock(10);
    EXPECT_FALSE(clock.advance(5)) << "it starts paused";
    clock.setSpeed(10);
    clock.play();
    EXPECT_FALSE(clock.advance(0.05));
    EXPECT_EQ(clock.frame(), 0U);
    EXPECT_TRUE(clock.advance(0.0625));
    EXPECT_EQ(clock.frame(), 1U);
    EXPECT_TRUE(clock.advance(0.3)) << "frames are skipped";
    EXPECT_EQ(clock.frame(), 4U);
    EXPECT_FALSE(clock.advance(-1));
    EXPECT_FALSE(clock.advance(std::nan("")));
    EXPECT_EQ(clock.frame(), 4U);
}

TEST(PlaybackClock, timeStandsStillWhileTheFrameIsNotShown) {
    PlaybackClock clock(10);
    clock.setSpeed(10);
    clock.play();
    EXPECT_FALSE(clock.advance(100, false));
    EXPECT_TRUE(clock.advance(0.125, true));
    EXPECT_EQ(clock.frame(), 1U);
}

TEST(PlaybackClock, withoutALoopItStopsAtTheEndAndStartsOver) {
    PlaybackClock clock(3);
    clock.play();
    EXPECT_TRUE(clock.advance(100));
    EXPECT_EQ(clock.frame(), 2U);
    EXPECT_FALSE(clock.isPlaying());
    clock.play();
    EXPECT_EQ(clock.frame(), 0U);
    clock.setSpeed(-1);
    clock.show(2);
    clock.play();
    EXPECT_TRUE(clock.advance(1));
    EXPECT_EQ(clock.frame(), 1U);
    EXPECT_TRUE(clock.advance(1));
    EXPECT_EQ(clock.frame(), 0U);
    EXPECT_FALSE(clock.isPlaying());
    clock.play();
    EXPECT_EQ(clock.frame(), 2U);
}

TEST(PlaybackClock, aLoopGoesRound) {
    PlaybackClock clock(4);
    clock.setLooping(true);
    clock.setSpeed(1);
    clock.show(3);
    clock.play();
    EXPECT_TRUE(clock.advance(2));
    EXPECT_EQ(clock.frame(), 1U);
    clock.setSpeed(-1);
    EXPECT_TRUE(clock.advance(2));
    EXPECT_EQ(clock.frame(), 3U);
    EXPECT_TRUE(clock.isPlaying());
    EXPECT_FALSE(clock.advance(4)) << "once round is the same frame";
}

TEST(PlaybackClock, stepsPauseAndStayInside) {
    PlaybackClock clock(5);
    clock.play();
    clock.step(2);
    EXPECT_FALSE(clock.isPlaying());
    EXPECT_EQ(clock.frame(), 2U);
    clock.step(-100);
    EXPECT_EQ(clock.frame(), 0U);
    clock.step(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(clock.frame(), 4U);
    clock.setLooping(true);
    clock.step(1);
    EXPECT_EQ(clock.frame(), 0U);
    clock.step(-1);
    EXPECT_EQ(clock.frame(), 4U);
}

TEST(PlaybackClock, whatComesNextIsKnown) {
    PlaybackClock clock(5);
    clock.show(2);
    EXPECT_THAT(clock.upcoming(10), ElementsAre(2, 3, 4));
    EXPECT_THAT(clock.upcoming(2), ElementsAre(2, 3));
    clock.setLooping(true);
    EXPECT_THAT(clock.upcoming(10), ElementsAre(2, 3, 4, 0, 1));
    clock.setSpeed(-5);
    EXPECT_THAT(clock.upcoming(4), ElementsAre(2, 1, 0, 4));
}

TEST(PlaybackClock, valuesThatMakeNoSenseDoNoHarm) {
    PlaybackClock clock(0);
    clock.play();
    EXPECT_FALSE(clock.isPlaying());
    EXPECT_EQ(clock.frameCount(), 1U);
    clock.setCount(3);
    for (double const speed : {0.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        clock.setSpeed(speed);
        EXPECT_EQ(clock.speed(), PlaybackClock::STANDARD_SPEED);
    }
    clock.setSpeed(std::numeric_limits<double>::max());
    clock.play();
    EXPECT_TRUE(clock.advance(1e300));
    EXPECT_EQ(clock.frame(), 2U);
    clock.setCount(2);
    EXPECT_EQ(clock.frame(), 1U);
}
