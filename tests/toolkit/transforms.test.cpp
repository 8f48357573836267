#include "toolkit/transforms.h"

#include <gtest/gtest.h>

namespace vellum::toolkit {
namespace {

TEST(transforms, productScalesFirstAndMovesThen) {
    Matrix4<double> const m = translation({1, 2, 3}) * scaling(10);
    // The point (1, 1, 1).
    EXPECT_EQ(m.e[0] + m.e[4] + m.e[8] + m.e[12], 11);
    EXPECT_EQ(m.e[1] + m.e[5] + m.e[9] + m.e[13], 12);
    EXPECT_EQ(m.e[2] + m.e[6] + m.e[10] + m.e[14], 13);
    EXPECT_EQ(m.e[3] + m.e[7] + m.e[11] + m.e[15], 1);
}

}  // namespace
}  // namespace vellum::toolkit
