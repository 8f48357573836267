#include "viewport/files/images/GuardedPicture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include <unistd.h>

using namespace vellum;
using namespace vellum::viewport;

TEST(GuardedPicture, thePictureOfTheChildArrives) {
    pid_t const self = getpid();
    std::shared_ptr<VL_Image const> const image = decodeGuarded([self](VL_Image& decoded) {
        if (!decoded.create(3, 2, 4, 16)) {
            return false;
        }
        decoded.getBuffer16()[23] = getpid() != self ? 0x1234 : 0;
        return true;
    });
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width(), 3U);
    EXPECT_EQ(image->height(), 2U);
    EXPECT_EQ(image->pixdepth(), 64);
    EXPECT_EQ(image->getBuffer16()[23], 0x1234) << "decoded in this process";
}

TEST(GuardedPicture, aDecoderThatFailsOrCrashesGivesNone) {
    EXPECT_EQ(decodeGuarded([](VL_Image& /*image*/) { return false; }), nullptr);
    EXPECT_EQ(decodeGuarded([](VL_Image& /*image*/) -> bool { std::abort(); }), nullptr);
    EXPECT_EQ(decodeGuarded([](VL_Image& /*image*/) -> bool { throw 7; }), nullptr);
    EXPECT_EQ(decodeGuarded([](VL_Image& image) {
                  std::signal(SIGSEGV, SIG_DFL);
                  std::raise(SIGSEGV);
                  return image.create(1, 1, 3, 8);
              }),
              nullptr);
}
