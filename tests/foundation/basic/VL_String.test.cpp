#include "foundation/basic/VL_String.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vellum {
namespace {

std::vector<std::string> piecesOf(char const* text, char const& separator = ' ') {
    Array<VL_String> pieces;
    unsigned int const count = VL_String(text).tokenize(separator, pieces);
    EXPECT_EQ(count, pieces.size());
    std::vector<std::string> out;
    for (VL_String const& piece : pieces) {
        EXPECT_EQ(piece.size(), std::string(piece.c_str()).size() + 1) << "size without the terminating zero";
        out.emplace_back(piece.c_str());
    }
    return out;
}

using Pieces = std::vector<std::string>;

// == Text ==

TEST(VL_String_test, isItsCharactersAndNothingMore) {
    EXPECT_EQ(sizeof(VL_String), sizeof(ArrayCore<char>));
}

TEST(VL_String_test, theEmptyStringHoldsItsTerminatingZero) {
    VL_String const text;
    ASSERT_EQ(text.size(), 1U);
    ASSERT_NE(text.data(), nullptr);
    EXPECT_EQ(text.data()[0], '\0');
}

TEST(VL_String_test, sizeCountsTheTerminatingZero) {
    VL_String const text("GL_INVALID_ENUM");
    EXPECT_EQ(text.size(), 16U);
    EXPECT_EQ(text.data()[15], '\0');
    EXPECT_STREQ(text.c_str(), "GL_INVALID_ENUM");
}

TEST(VL_String_test, nullGivesTheEmptyString) {
    char const* const none = nullptr;
    EXPECT_EQ(VL_String(none).size(), 1U);
    VL_String text("something");
    text = none;
    EXPECT_EQ(text.size(), 1U);
    EXPECT_STREQ(text.c_str(), "");
}

TEST(VL_String_test, assigningMakesTheStorageExactlyAsLargeAsTheText) {
    VL_String text("a longer text");
    text = "short";
    EXPECT_EQ(text.size(), 6U);
    EXPECT_EQ(text.capacity(), 6U);
    text = "something longer";
    EXPECT_EQ(text.size(), 17U);
    EXPECT_EQ(text.capacity(), 17U);
    EXPECT_STREQ(text.c_str(), "something longer");
}

TEST(VL_String_test, assigningTextOfTheSameLengthKeepsTheStorage) {
    VL_String text("abc");
    char const* const storage = text.data();
    text = "xyz";
    EXPECT_EQ(text.data(), storage);
    EXPECT_STREQ(text.c_str(), "xyz");
    EXPECT_EQ(text.size(), 4U);
}

TEST(VL_String_test, assignTakesSoManyCharacters) {
    VL_String text;
    text.assign("picture.png", 7);
    EXPECT_STREQ(text.c_str(), "picture");
    EXPECT_EQ(text.size(), 8U);
    text.assign("", 0);
    EXPECT_EQ(text.size(), 1U);
}

TEST(VL_String_test, aPartOfTheStringMayBeAssignedToIt) {
    VL_String text("picture.png");
    text = text.c_str() + 8;
    EXPECT_STREQ(text.c_str(), "png");
    text.assign(text.c_str(), 3);
    EXPECT_STREQ(text.c_str(), "png");
    VL_String const& same = text;
    text = same;
    EXPECT_STREQ(text.c_str(), "png");
}

TEST(VL_String_test, copiesAreIndependent) {
    VL_String text("abc");
    VL_String const copy(text);
    text.data()[0] = 'x';
    EXPECT_STREQ(copy.c_str(), "abc");
    EXPECT_EQ(copy.size(), 4U);
}

TEST(VL_String_test, aStringMovedFromCanBeReadAndAssignedTo) {
    VL_String text("abc");
    char const* const storage = text.data();
    VL_String const taken(std::move(text));
    EXPECT_EQ(taken.data(), storage);
    EXPECT_STREQ(taken.c_str(), "abc");
    // NOLINTBEGIN(bugprone-use-after-move): the state afterwards is promised.
    EXPECT_STREQ(text.c_str(), "");
    Array<VL_String> pieces;
    EXPECT_EQ(text.tokenize(' ', pieces), 1U);
    VL_String const copy(text);
    EXPECT_STREQ(copy.c_str(), "");
    text = "next";
    EXPECT_STREQ(text.c_str(), "next");
    EXPECT_EQ(text.size(), 5U);
    // NOLINTEND(bugprone-use-after-move)
}

TEST(VL_String_test, comparisonsAreByteByByte) {
    EXPECT_TRUE(VL_String("abc") == VL_String("abc"));
    EXPECT_FALSE(VL_String("abc") == VL_String("abC"));
    EXPECT_TRUE(VL_String("abc") != VL_String("ab"));
    EXPECT_TRUE(VL_String() == VL_String(""));
}

// == Tokenizing ==

TEST(VL_String_test, oneBlankGivesTwoPieces) {
    EXPECT_EQ(piecesOf("a b"), (Pieces{"a", "b"}));
}

TEST(VL_String_test, twoBlanksGiveAnEmptyPieceBetweenThem) {
    EXPECT_EQ(piecesOf("a  b"), (Pieces{"a", "", "b"}));
}

TEST(VL_String_test, aSeparatorAtEitherEndGivesAnEmptyPieceThere) {
    EXPECT_EQ(piecesOf(" a"), (Pieces{"", "a"}));
    EXPECT_EQ(piecesOf("a "), (Pieces{"a", ""}));
    EXPECT_EQ(piecesOf(" "), (Pieces{"", ""}));
    EXPECT_EQ(piecesOf("  "), (Pieces{"", "", ""}));
}

TEST(VL_String_test, theEmptyStringGivesOneEmptyPiece) {
    EXPECT_EQ(piecesOf(""), (Pieces{""}));
}

TEST(VL_String_test, aStringWithoutSeparatorGivesItself) {
    EXPECT_EQ(piecesOf("GL_ARB_multitexture"), (Pieces{"GL_ARB_multitexture"}));
    EXPECT_EQ(piecesOf("a b", '/'), (Pieces{"a b"}));
}

TEST(VL_String_test, theTerminatingZeroSeparatesNothing) {
    EXPECT_EQ(piecesOf("a b", '\0'), (Pieces{"a b"}));
}

TEST(VL_String_test, piecesAreAppendedToWhatIsThere) {
    Array<VL_String> pieces{"kept"};
    EXPECT_EQ(VL_String("a b").tokenize(' ', pieces), 3U);
    ASSERT_EQ(pieces.size(), 3U);
    EXPECT_STREQ(pieces[0].c_str(), "kept");
    EXPECT_STREQ(pieces[1].c_str(), "a");
    EXPECT_STREQ(pieces[2].c_str(), "b");
}

TEST(VL_String_test, piecesGrowLikeAnyAppending) {
    Array<VL_String> pieces;
    VL_String("1 2 3 4 5").tokenize(' ', pieces);
    EXPECT_EQ(pieces.size(), 5U);
    EXPECT_EQ(pieces.capacity(), 8U);
}

TEST(VL_String_test, tokenizingLeavesTheStringAsItIs) {
    VL_String const text("a b c");
    Array<VL_String> pieces;
    text.tokenize(' ', pieces);
    EXPECT_STREQ(text.c_str(), "a b c");
    EXPECT_EQ(text.size(), 6U);
}

TEST(VL_String_test, aStringMayBeTokenizedIntoTheArrayThatHoldsIt) {
    Array<VL_String> pieces{"a b c d e f"};
    EXPECT_EQ(pieces[0].tokenize(pieces[0].data()[1], pieces), 7U);
    EXPECT_STREQ(pieces[0].c_str(), "a b c d e f");
    EXPECT_STREQ(pieces[1].c_str(), "a");
    EXPECT_STREQ(pieces[6].c_str(), "f");
}

}  // namespace
}  // namespace vellum
