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

TEST(TextMask, controlCharactersAreQuestionMarks) {
    for (TextWriter const& writer : writers()) {
        EXPECT_EQ(writer.write("a\n\x1B\x7F", 16).coverage, writer.write("a???", 16).coverage);
    }
}

// == Other scripts ==

TEST(TextMask, simpleLettersShowAQuestionMarkForEachCharacterThatTheyLack) {
    TextWriter const simple(std::vector<std::string>{});
    EXPECT_EQ(simple.write("T \xC2\xB0\xC3\x85", 16).coverage, simple.write("T ??", 16).coverage);
    EXPECT_EQ(simple.write("\xFF\xC3", 16).coverage, simple.write("??", 16).coverage) << "no UTF-8";
}

TEST(TextMask, scriptsOfTheFontAreWritten) {
    TextWriter const writer;
    ASSERT_TRUE(writer.hasFont()) << "the tests need a font: scripts/deps installs one";
    std::vector<TextMask> seen{writer.write("?", 24), writer.write("\xEF\xBF\xBD", 24)};
    for (char const* const letter :
         {"\xC3\xA9", "\xC3\x85", "\xCF\x81", "\xCE\xA3", "\xD0\x96", "\xD4\xB1", "\xD7\xA9", "\xD8\xB4"}) {
        TextMask const mask = writer.write(letter, 24);
        EXPECT_GT(inkOf(mask), 0U) << letter;
        for (TextMask const& other : seen) {
            EXPECT_FALSE(other.width == mask.width && other.coverage == mask.coverage) << letter;
        }
        seen.push_back(mask);
    }
}

TEST(TextMask, marksStandOnTheirLetters) {
    TextWriter const writer;
    TextMask const one = writer.write("e\xCC\x81", 32);
    EXPECT_EQ(one.width, writer.write("e", 32).width);
    EXPECT_GT(inkOf(one), inkOf(writer.write("e", 32)));
}

TEST(TextMask, arabicLettersAreJoinedAndRunFromTheRight) {
    TextWriter const writer;
    std::string const beh = "\xD8\xA8";
    std::string const alef = "\xD8\xA7";
    EXPECT_LT(writer.write(beh + beh, 32).width, 2 * writer.write(beh, 32).width - 4);
    // An alef is a tall stroke, higher than a beh: the topmost ink is at the left.
    TextMask const word = writer.write(beh + " " + alef, 32);
    auto const top = std::find_if(word.coverage.begin(), word.coverage.end(),
                                  [](unsigned char coverage) { return coverage > 0; });
    ASSERT_NE(top, word.coverage.end());
    EXPECT_LT((top - word.coverage.begin()) % word.width, word.width / 2);
}

TEST(TextMask, numbersInATextFromTheRightKeepTheirOrder) {
    TextWriter const writer;
    std::string const shin = "\xD7\xA9";
    // Written as a run from the left, at the left of the letter that it follows.
    TextMask const mask = writer.write(shin + "71", 32);
    TextMask const number = writer.write("71", 32);
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x + 2 < number.width; ++x) {
            EXPECT_EQ(mask.coverage[static_cast<std::size_t>(y * mask.width + x)],
                      number.coverage[static_cast<std::size_t>(y * number.width + x)])
                << x << ", " << y;
        }
    }
}

// == Shortening ==

TEST(TextMask, longTextsLoseTheirMiddle) {
    for (TextWriter const& writer : writers()) {
        std::string const dots = writer.hasFont() ? "\xE2\x80\xA6" : "...";
        std::string const text = "the potential energy per atom";
        EXPECT_EQ(writer.shortened(text, 16, 1000), text);
        std::string const shorter = writer.shortened(text, 16, 100);
        EXPECT_LE(writer.write(shorter, 16).width, 100);
        EXPECT_GT(writer.write(shorter, 16).width, 80) << "no more than needed is lost";
        EXPECT_EQ(shorter.substr(0, 4), "the ");
        EXPECT_EQ(shorter.substr(shorter.size() - 4), "atom");
        EXPECT_NE(shorter.find(dots), std::string::npos);
        EXPECT_EQ(writer.shortened(text, 16, 0), dots) << "something is always written";
        EXPECT_EQ(writer.shortened("", 16, 10), "");
    }
}

TEST(TextMask, charactersAreNotCutApart) {
    TextWriter const writer;
    std::string text;
    for (int i = 0; i < 40; ++i) {
        text += "\xD0\x96\xCC\x81";  // with a mark
    }
    for (int widest = 20; widest < 200; widest += 7) {
        std::string const shorter = writer.shortened(text, 16, widest);
        EXPECT_EQ((shorter.size() - 3) % 4, 0U) << shorter;
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
