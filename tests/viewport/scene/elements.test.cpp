#include "viewport/scene/elements.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace vellum;
using namespace vellum::viewport;

TEST(elements, symbolsAreFoundInAnyCaseAndNothingElse) {
    EXPECT_STREQ(findElement("Fe")->symbol, "Fe");
    EXPECT_EQ(findElement("FE"), findElement("Fe"));
    EXPECT_EQ(findElement("fe"), findElement("Fe"));
    EXPECT_EQ(findElement("D"), findElement("H"));
    for (char const* const other : {"", "Xx", "F e", "Fe2", "1", "CA1", "FeO"}) {
        EXPECT_EQ(findElement(other), nullptr) << other;
    }
}

TEST(elements, theyStandInTheOrderOfThePeriodicSystem) {
    EXPECT_EQ(atomicNumber(*findElement("H")), 1U);
    EXPECT_EQ(atomicNumber(*findElement("Fe")), 26U);
    EXPECT_EQ(atomicNumber(*findElement("Xe")), 54U);
    EXPECT_EQ(atomicNumber(*findElement("U")), 92U);
    EXPECT_EQ(atomicNumber(*findElement("Mt")), 109U);
}

TEST(elements, colorsAndRadiiAreTheUsualOnes) {
    Color4<float> const oxygen = findElement("O")->color();
    EXPECT_FLOAT_EQ(oxygen.r, 1);
    EXPECT_FLOAT_EQ(oxygen.g, 13 / 255.0F);
    EXPECT_FLOAT_EQ(oxygen.b, 13 / 255.0F);
    EXPECT_EQ(findElement("C")->covalentRadius, 0.76);
    EXPECT_EQ(findElement("Cs")->covalentRadius, 2.44);
    EXPECT_EQ(findElement("Cm")->covalentRadius, 1.69);
    EXPECT_EQ(findElement("Bk")->covalentRadius, 0) << "none is known";
}
