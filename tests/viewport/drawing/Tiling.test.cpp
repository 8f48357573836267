#include "viewport/drawing/Tiling.h"

#include <gtest/gtest.h>

using namespace vellum::viewport;

TEST(Tiling, largePicturesAreSplitIntoModerateTiles) {
    for (PictureSize const& size : {PictureSize{1, 1}, PictureSize{1280, 720}, PictureSize{16384, 16384},
                                    PictureSize{16384, 1}, PictureSize{5000, 3000}}) {
        Tiling const tiling = Tiling::of(size);
        EXPECT_LE(tiling.bufferWidth(), 2624);
        EXPECT_LE(tiling.bufferHeight(), 2624);
        EXPECT_LE(tiling.width, size.width);
        EXPECT_LE(tiling.height, size.height);
        EXPECT_GE(tiling.samplesPerSide, 1);
    }
    EXPECT_EQ(Tiling::of({1280, 720}).samplesPerSide, 2);
}

TEST(Tiling, tilesAreFewAndEven) {
    EXPECT_EQ(Tiling::of({1280, 720}).width, 1280);
    EXPECT_EQ(Tiling::of({1281, 720}).width, 641);
    EXPECT_EQ(Tiling::of({3840, 2160}).width, 1280);
    EXPECT_EQ(Tiling::of({3840, 2160}).height, 1080);
}

TEST(Tiling, tilesOfTheSameShapeAreAsManyAlongBothSides) {
    EXPECT_EQ(Tiling::ofSameShape({1280, 720}).height, 720);
    EXPECT_EQ(Tiling::ofSameShape({1920, 1080}).width, 960);
    EXPECT_EQ(Tiling::ofSameShape({1920, 1080}).height, 540);
    EXPECT_EQ(Tiling::ofSameShape({16384, 1}).height, 1);
}

TEST(Tiling, oneTileHoldsPicturesOfUpTo4096PixelsPerSide) {
    for (PictureSize const& size : {PictureSize{1, 1}, PictureSize{1280, 720}, PictureSize{4096, 4096}}) {
        Tiling const tiling = Tiling::ofOneTile(size);
        EXPECT_EQ(tiling.width, size.width);
        EXPECT_EQ(tiling.height, size.height);
    }
    EXPECT_EQ(Tiling::ofOneTile({1280, 800}).samplesPerSide, 2);
    EXPECT_EQ(Tiling::ofOneTile({4096, 4096}).samplesPerSide, 1) << "the buffer would take a gigabyte";
    EXPECT_EQ(Tiling::ofOneTile({16384, 100}).width, 4096);
}
