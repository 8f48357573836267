#include "viewport/playback/NumberedName.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;
using testing::HasSubstr;

TEST(NumberedName, theNumberStandsWhereThePatternHasIt) {
    EXPECT_EQ(NumberedName::parse("f_%04d.png").value().of(7), "f_0007.png");
    EXPECT_EQ(NumberedName::parse("f_%04d.png").value().of(123456), "f_123456.png");
    EXPECT_EQ(NumberedName::parse("%d").value().of(0), "0");
    EXPECT_EQ(NumberedName::parse("100%%/%02d%%.jpg").value().of(3), "100%/03%.jpg");
    EXPECT_EQ(NumberedName::parse("%020d").value().of(1), "00000000000000000001");
}

TEST(NumberedName, otherPatternsAreFaults) {
    EXPECT_THAT(NumberedName::parse("f.png").fault().message, HasSubstr("'f.png' has no %d"));
    EXPECT_THAT(NumberedName::parse("100%%.png").fault().message, HasSubstr("has no %d"));
    EXPECT_THAT(NumberedName::parse("%d_%d.png").fault().message, HasSubstr("more than one %d"));
    for (char const* const pattern : {"%", "a%", "%s", "%4d", "%i", "%0d", "%00d", "%021d", "%-4d", "%04",
                                      "%0999999999999999999999d", "%d%", "% d", "%ld", "%04x%d"}) {
        EXPECT_THAT(NumberedName::parse(pattern).fault().message, HasSubstr("percent sign")) << pattern;
    }
}
