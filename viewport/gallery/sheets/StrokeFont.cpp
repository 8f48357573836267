#include "viewport/gallery/sheets/StrokeFont.h"

#include "foundation/raster/Core_RL.h"

#include <algorithm>

namespace vellum::gallery {

namespace {

// Glyphs are polylines on a grid, two digits (x, y) for each point, a blank between polylines:
//
//     y = 8  top of tall letters and digits
//     y = 6  top of small letters
//     y = 2  base line
//     y = 0  below the base line
constexpr float BASE_LINE = 2.0F;
constexpr float TALL = 6.0F;    // from the base line to the top
constexpr int GAP = 2;          // between neighbors
constexpr int BLANK_WIDTH = 2;  // of characters without a glyph

char const* glyph(char character) {
    static char const* const letters[26] = {
        "4536160503123243 4642",        // a
        "0802 0516364543321203",        // b
        "4536160503123243",             // c
        "4842 4536160503123243",        // d
        "04444536160503123243",         // e
        "38281712 0636",                // f
        "4536160503123243 4641301001",  // g
        "0802 0516364542",              // h
        "0602 0807",                    // i
        "161100 1817",                  // j
        "0802 3603 1432",               // k
        "080312",                       // l
        "0602 0516263532 3546566562",   // m
        "0602 0516364542",              // n
        "163645433212030516",           // o
        "0600 0516364543321203",        // p
        "4640 4536160503123243",        // q
        "0602 051626",                  // r
        "45361605143443321203",         // s
        "18132232 0636",                // t
        "0603123243 4642",              // u
        "062246",                       // v
        "0612253246",                   // w
        "0642 0246",                    // x
        "0622 4610",                    // y
        "06460242",                     // z
    };
    static char const* const digits[10] = {
        "183847433212030718",                // 0
        "071812",                            // 1
        "07183847460242",                    // 2
        "07183847463525 354443321203",       // 3
        "32380444",                          // 4
        "480805354443321203",                // 5
        "38180703123243443505",              // 6
        "084812",                            // 7
        "15060718384746351504031232434435",  // 8
        "12324347381807061545",              // 9
    };
    if (character >= 'a' && character <= 'z') {
        return letters[character - 'a'];
    }
    if (character >= '0' && character <= '9') {
        return digits[character - '0'];
    }
    switch (character) {
    case '-':
        return "0434";
    case ',':
        return "1301";
    case '.':
        return "0203";
    default:
        return "";
    }
}

int glyphWidth(char const* strokes) {
    int width = strokes[0] == '\0' ? BLANK_WIDTH : 0;
    for (char const* at = strokes; *at != '\0'; at += *at == ' ' ? 1 : 2) {
        if (*at != ' ') {
            width = std::max(width, *at - '0');
        }
    }
    return width;
}

}  // namespace

void drawText(Core_RL& layer, std::string const& text, Vector2<float> const& origin, float size) {
    float const unit = size / TALL;
    int left = 0;
    for (char character : text) {
        char const* const strokes = glyph(character);
        auto const point = [&](char const* digits) {
            return origin + Vector2<float>{static_cast<float>(left + digits[0] - '0'),
                                           static_cast<float>(digits[1] - '0') - BASE_LINE} *
                                unit;
        };
        char const* previous = nullptr;
        for (char const* at = strokes; *at != '\0'; at += *at == ' ' ? 1 : 2) {
            if (*at == ' ') {
                previous = nullptr;
                continue;
            }
            if (previous != nullptr) {
                layer.renderSegment2(point(previous), point(at));
            }
            previous = at;
        }
        left += glyphWidth(strokes) + GAP;
    }
}

float textWidth(std::string const& text, float size) {
    int width = 0;
    for (char character : text) {
        width += glyphWidth(glyph(character)) + GAP;
    }
    return text.empty() ? 0.0F : static_cast<float>(width - GAP) * size / TALL;
}

}  // namespace vellum::gallery
