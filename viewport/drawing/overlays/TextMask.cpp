#include "viewport/drawing/overlays/TextMask.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

// Both are compiled here alone, and nothing of them is visible outside this source.
#define STB_TRUETYPE_IMPLEMENTATION
#define STBTT_STATIC
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_easy_font.h>
#include <stb/stb_truetype.h>
#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif

namespace vellum::viewport {

namespace {

std::string ascii(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

TextMask blank(double width, int height) {
    TextMask mask;
    mask.width = static_cast<int>(std::ceil(width)) + 1;
    mask.height = height;
    mask.coverage.assign(static_cast<std::size_t>(mask.width) * static_cast<std::size_t>(height), 0);
    return mask;
}

unsigned char& pixelOf(TextMask& mask, int x, int y) {
    return mask.coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(mask.width) +
                         static_cast<std::size_t>(x)];
}

TextMask writeTrueType(std::string const& text, int height, stbtt_fontinfo const& font) {
    float const scale = stbtt_ScaleForPixelHeight(&font, static_cast<float>(height));
    int ascent = 0;
    int descent = 0;
    int gap = 0;
    stbtt_GetFontVMetrics(&font, &ascent, &descent, &gap);
    int const baseLine = static_cast<int>(std::lround(static_cast<float>(ascent) * scale));

    struct Glyph {
        char character;
        float left;
    };
    std::vector<Glyph> glyphs;
    float pen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        glyphs.push_back({text[i], pen});
        int advance = 0;
        int bearing = 0;
        stbtt_GetCodepointHMetrics(&font, text[i], &advance, &bearing);
        int const kerning =
            i + 1 < text.size() ? stbtt_GetCodepointKernAdvance(&font, text[i], text[i + 1]) : 0;
        pen += static_cast<float>(advance + kerning) * scale;
    }
    TextMask mask = blank(static_cast<double>(pen), height);
    for (Glyph const& glyph : glyphs) {
        // Letters start between pixels where they have to: evenly spaced text is easier to read.
        float const whole = std::floor(glyph.left);
        int width = 0;
        int rows = 0;
        int left = 0;
        int top = 0;
        unsigned char* const bits = stbtt_GetCodepointBitmapSubpixel(
            &font, scale, scale, glyph.left - whole, 0, glyph.character, &width, &rows, &left, &top);
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < width; ++x) {
                int const column = static_cast<int>(whole) + left + x;
                int const row = baseLine + top + y;
                if (column >= 0 && column < mask.width && row >= 0 && row < mask.height) {
                    unsigned char& place = pixelOf(mask, column, row);
                    place = std::max(place, bits[y * width + x]);
                }
            }
        }
        stbtt_FreeBitmap(bits, nullptr);
    }
    return mask;
}

TextMask writeEasy(std::string text, int height) {
    // Twelve units to a line; each letter gives some quads, each quad four corners of sixteen bytes.
    constexpr float UNITS_PER_LINE = 12;
    constexpr std::size_t MOST_BYTES_PER_LETTER = 70 * 4 * 16;
    struct Corner {
        float x;
        float y;
        float z;
        unsigned char color[4];
    };
    std::vector<Corner> corners((text.size() + 1) * MOST_BYTES_PER_LETTER / sizeof(Corner));
    double const scale = height / static_cast<double>(UNITS_PER_LINE);
    TextMask mask = blank(stb_easy_font_width(text.data()) * scale, height);
    int const quads = stb_easy_font_print(0, 1, text.data(), nullptr, corners.data(),
                                          static_cast<int>(corners.size() * sizeof(Corner)));
    // How much of the pixel from `at` to `at` + 1 lies between two ends.
    auto const share = [](int at, double from, double to) {
        return std::clamp(std::min(at + 1.0, to) - std::max(static_cast<double>(at), from), 0.0, 1.0);
    };
    for (int quad = 0; quad < quads; ++quad) {
        Corner const* const c = corners.data() + std::size_t{4} * static_cast<std::size_t>(quad);
        double const left = c[0].x * scale;
        double const right = c[2].x * scale;
        double const top = c[0].y * scale;
        double const bottom = c[2].y * scale;
        for (int y = std::max(0, static_cast<int>(top)); y < std::min<double>(height, bottom); ++y) {
            for (int x = std::max(0, static_cast<int>(left)); x < std::min<double>(mask.width, right); ++x) {
                unsigned char& place = pixelOf(mask, x, y);
                double const covered = 255 * share(x, left, right) * share(y, top, bottom);
                place = static_cast<unsigned char>(std::min(255.0, place + covered));
            }
        }
    }
    return mask;
}

}  // namespace

TextWriter::TextWriter(std::vector<std::string> const& fontFiles) {
    for (std::string const& file : fontFiles) {
        std::ifstream stream(file, std::ios::binary);
        std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(stream),
                                         std::istreambuf_iterator<char>()};
        stbtt_fontinfo font{};
        if (bytes.size() > 64 && stbtt_GetFontOffsetForIndex(bytes.data(), 0) == 0 &&
            stbtt_InitFont(&font, bytes.data(), 0) != 0) {
            typeface = std::move(bytes);
            return;
        }
    }
}

std::vector<std::string> TextWriter::systemFonts() {
    std::vector<std::string> files;
    for (char const* const folder : {"/usr/share/fonts", "/usr/local/share/fonts"}) {
        for (char const* const file :
             {"truetype/dejavu/DejaVuSans.ttf", "dejavu/DejaVuSans.ttf", "TTF/DejaVuSans.ttf",
              "dejavu-sans-fonts/DejaVuSans.ttf", "truetype/liberation/LiberationSans-Regular.ttf",
              "liberation-sans/LiberationSans-Regular.ttf", "truetype/noto/NotoSans-Regular.ttf",
              "noto/NotoSans-Regular.ttf"}) {
            files.push_back(std::string(folder) + "/" + file);
        }
    }
    return files;
}

TextMask TextWriter::write(std::string const& text, int height) const {
    std::string const line = ascii(text);
    stbtt_fontinfo font{};
    if (!typeface.empty() && stbtt_InitFont(&font, typeface.data(), 0) != 0) {
        return writeTrueType(line, height, font);
    }
    return writeEasy(line, height);
}

}  // namespace vellum::viewport
