#include "viewport/files/mesh/utf16.h"

#include <gtest/gtest.h>

using vellum::viewport::utf8OfUtf16;

TEST(utf16, onlyTextsWithTheMarkAreConverted) {
    EXPECT_FALSE(utf8OfUtf16(""));
    EXPECT_FALSE(utf8OfUtf16("\xFE"));
    EXPECT_FALSE(utf8OfUtf16("v 1 2 3\n"));
    EXPECT_EQ(utf8OfUtf16("\xFE\xFF"), "");
    EXPECT_EQ(utf8OfUtf16("\xFF\xFE"), "");
}

TEST(utf16, bothByteOrdersGiveTheSame) {
    std::string const expected = "f\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(utf8OfUtf16(std::string("\xFE\xFF\0f\0\xE4\x20\xAC\xD8\x3D\xDE\0", 12)), expected);
    EXPECT_EQ(utf8OfUtf16(std::string("\xFF\xFE"
                                      "f\0\xE4\0\xAC\x20\x3D\xD8\0\xDE",
                                      12)),
              expected);
}

TEST(utf16, halvesOfCharactersAreReplaced) {
    EXPECT_EQ(utf8OfUtf16(std::string("\xFE\xFF\xD8\x3D\0x", 6)), "\xEF\xBF\xBDx");
    EXPECT_EQ(utf8OfUtf16("\xFE\xFF\xDE\x01\xD8\x3D"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(utf8OfUtf16(std::string("\xFE\xFF\0x\0", 5)), "x");
}
