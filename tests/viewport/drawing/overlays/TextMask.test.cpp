#include "viewport/drawing/overlays/TextMask.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace vellum::viewport;

namespace {

std::size_t inkOf(TextMask const& mask) {
    return std::accumulate(mask.coverage.begin(), mask.coverage.end(), std::size_t{0});
}

/// Both ways to write; the first is the second where the system has no font.
std::vector<TextWriter> writers() {
    return {TextWriter(), TextWriter({"/nonexistent/font.ttf"})};
}

}  // namespace

TEST(TextMask, allCharactersOfAsciiCanBeSeenAndToldApart) {
    for (TextWriter const& writer : writers()) {
        std::vector<TextMask> seen;
        for (char character = '!'; character <= '~'; ++character) {
            TextMask const mask = writer.write(std::string(1, character), 16);
            ASSERT_EQ(mask.coverage.size(), static_cast<std::size_t>(mask.width * mask.height));
            EXPECT_GT(inkOf(mask), 0U) << character;
            if (character == '|') {
                continue;  // Many faces draw it like an l.
            }
            for (TextMask const& other : seen) {
                EXPECT_FALSE(other.width == mask.width && other.coverage == mask.coverage) << character;
            }
            seen.push_back(mask);
        }
    }
}

TEST(TextMask, aLineIsAsHighAsAskedForAndGrowsWithItsText) {
    for (TextWriter const& writer : writers()) {
        for (int const height : {1, 9, 16, 64}) {
            TextMask const one = writer.write("speed", height);
            TextMask const two = writer.write("speedspeed", height);
            EXPECT_EQ(one.height, height);
            EXPECT_GT(two.width, one.width);
            EXPECT_LE(two.width, 2 * one.width + 1);
        }
        EXPECT_GT(writer.write("speed", 32).width, writer.write("speed", 16).width * 3 / 2);
        EXPECT_EQ(inkOf(writer.write("", 16)), 0U);
        EXPECT_EQ(inkOf(writer.write("   ", 16)), 0U);
    }
}

TEST(TextMask, lettersBeginAtTheLeftAndLeaveNothingOut) {
    for (TextWriter const& writer : writers()) {
        TextMask const mask = writer.write("Hg", 24);
        int first = mask.width;
        int last = 0;
        for (int y = 0; y < mask.height; ++y) {
            for (int x = 0; x < mask.width; ++x) {
                if (mask.coverage[static_cast<std::size_t>(y * mask.width + x)] > 128) {
                    first = std::min(first, x);
                    last = std::max(last, x);
                }
            }
        }
        EXPECT_LT(first, 6);
        EXPECT_GT(last, mask.width - 8);
    }
}

TEST(TextMask, otherCharactersAreQuestionMarks) {
    for (TextWriter const& writer : writers()) {
        EXPECT_EQ(writer.write("a\xC3\xA9\n", 16).coverage, writer.write("a???", 16).coverage);
    }
}

TEST(TextMask, filesThatAreNoFontsArePassedOver) {
    TemporaryFolder const folder;
    std::string const noise(5000, 'x');
    TextWriter const writer(
        {folder.file("gone.ttf"), folder.write("empty.ttf", ""), folder.write("noise.ttf", noise)});
    EXPECT_FALSE(writer.hasFont());
    EXPECT_GT(inkOf(writer.write("7.01", 16)), 0U);
}
