#include "viewport/text/single_line.h"

#include "viewport/text/Fault.h"
#include "viewport/text/joined.h"

#include <gtest/gtest.h>

using namespace vellum::viewport;

TEST(SingleLine, controlCharactersAreShownAsQuestionMarks) {
    EXPECT_EQ(singleLine("a\nb\tc\x1B[31m\x7F"), "a?b?c?[31m?");
    EXPECT_EQ(singleLine(std::string_view("\0x", 2)), "?x");
}

TEST(Joined, wordsAreSeparated) {
    EXPECT_EQ(joined({"a", "", "b"}), "a, , b");
    EXPECT_EQ(joined({"", "b"}, " "), " b") << "an empty word has a place too";
    EXPECT_EQ(joined({"a"}), "a");
    EXPECT_EQ(joined({}), "");
}

TEST(SingleLine, printableAndForeignLettersStay) {
    EXPECT_EQ(singleLine(" ~ \xC3\xA4"), " ~ \xC3\xA4");
}

TEST(SingleLine, faultLinesAreSingleLines) {
    EXPECT_EQ((Fault{"a\nb", "is\rbad"}.line()), "a?b: is?bad");
    EXPECT_EQ((Fault{"", "bad"}.line()), "bad");
}
