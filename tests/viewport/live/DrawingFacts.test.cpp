#include "viewport/live/DrawingFacts.h"

#include <gtest/gtest.h>

using namespace vellum::viewport;

TEST(FrameRate, countsFramesThatFollowEachOther) {
    FrameRate rate;
    rate.count(5);
    EXPECT_EQ(rate.perSecond(), 0) << "one frame alone";
    for (int i = 1; i <= 40; ++i) {
        rate.count(5 + i * 0.125);
    }
    EXPECT_DOUBLE_EQ(rate.perSecond(), 8);
}

TEST(FrameRate, beginsAnewAfterAPause) {
    FrameRate rate;
    rate.count(1);
    rate.count(1.25);
    rate.count(100);
    EXPECT_EQ(rate.perSecond(), 0);
    rate.count(100.5);
    EXPECT_DOUBLE_EQ(rate.perSecond(), 2);
}
