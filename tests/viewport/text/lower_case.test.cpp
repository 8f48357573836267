#include "viewport/text/lower_case.h"

#include <gtest/gtest.h>

using namespace vellum::viewport;

TEST(LowerCase, onlyAsciiCapitalsChange) {
    EXPECT_EQ(lowerCase("AZ az [@ 09"), "az az [@ 09");
    EXPECT_EQ(lowerCase("\xC3\x84.PLY"), "\xC3\x84.ply");
    EXPECT_EQ(lowerCase(""), "");
}
