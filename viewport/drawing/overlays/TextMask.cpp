#include "viewport/drawing/overlays/TextMask.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include <hb-ft.h>
#include <hb.h>

// Compiled here alone, and nothing of it is visible outside this source.
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_easy_font.h>
#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif

namespace vellum::viewport {

namespace {

constexpr double UNITS_PER_PIXEL = 64;  // of FreeType and, with it, of HarfBuzz

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

struct Character {
    hb_codepoint_t code;
    unsigned int start;  // bytes
};

/// What is no UTF-8 becomes the character for that.
std::vector<Character> charactersOf(std::string const& text) {
    hb_buffer_t* const decoder = hb_buffer_create();
    hb_buffer_add_utf8(decoder, text.data(), static_cast<int>(text.size()), 0, -1);
    unsigned int count = 0;
    hb_glyph_info_t const* const infos = hb_buffer_get_glyph_infos(decoder, &count);
    std::vector<Character> characters;
    std::transform(infos, infos + count, std::back_inserter(characters), [](hb_glyph_info_t const& info) {
        return Character{info.codepoint, info.cluster};
    });
    hb_buffer_destroy(decoder);
    return characters;
}

hb_unicode_general_category_t categoryOf(hb_codepoint_t character) {
    return hb_unicode_general_category(hb_unicode_funcs_get_default(), character);
}

/// Whether it is put on the character before it.
bool isMark(hb_codepoint_t character) {
    hb_unicode_general_category_t const category = categoryOf(character);
    return category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK;
}

/// One '?' for each character that is not ASCII.
std::string ascii(std::string const& text) {
    std::string line;
    for (Character const& character : charactersOf(text)) {
        line += character.code < ' ' || character.code > '~' ? '?' : static_cast<char>(character.code);
    }
    return line;
}

std::string withoutControls(std::string text) {
    constexpr char DELETE = 0x7F;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == DELETE; }, '?');
    return text;
}

// == Simple letters ==

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

// == Runs ==

/// A part of a text that is written in one script and so in one direction.
struct Run {
    unsigned int start;   // bytes
    unsigned int length;  // bytes
    hb_script_t script;
    hb_direction_t direction;
};

bool isOfAnyScript(hb_script_t script) {
    return script == HB_SCRIPT_COMMON || script == HB_SCRIPT_INHERITED || script == HB_SCRIPT_UNKNOWN;
}

bool isDigit(hb_codepoint_t character) {
    return categoryOf(character) == HB_UNICODE_GENERAL_CATEGORY_DECIMAL_NUMBER;
}

/// The runs of a text from left to right. Blanks, signs and marks belong to the run that they follow; so do
/// digits, but not to a script that is written from right to left: numbers are not.
std::vector<Run> runsOf(std::string const& text) {
    std::vector<Run> runs;
    for (auto const& [character, start] : charactersOf(text)) {
        hb_script_t script = hb_unicode_script(hb_unicode_funcs_get_default(), character);
        bool const isNeutral = isOfAnyScript(script);
        if (isNeutral && isDigit(character)) {
            script = HB_SCRIPT_LATIN;
        }
        bool const isNumberFromTheRight =
            !runs.empty() && isDigit(character) && runs.back().direction == HB_DIRECTION_RTL;
        bool const isSame =
            !runs.empty() && !isNumberFromTheRight && (isNeutral || runs.back().script == script);
        if (!isSame) {
            // A text that begins with signs: they belong to the first script.
            if (runs.size() == 1 && isOfAnyScript(runs.back().script) && !isNumberFromTheRight) {
                runs.back().script = script;
                runs.back().direction = hb_script_get_horizontal_direction(script);
                continue;
            }
            hb_direction_t const direction = hb_script_get_horizontal_direction(script);
            runs.push_back({start, 0, script, direction});
        }
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        std::size_t const end = i + 1 < runs.size() ? runs[i + 1].start : text.size();
        runs[i].length = static_cast<unsigned int>(end) - runs[i].start;
    }
    // A text that begins in a script from right to left is one from right to left.
    if (!runs.empty() && runs.front().direction == HB_DIRECTION_RTL) {
        std::reverse(runs.begin(), runs.end());
    }
    return runs;
}

}  // namespace

// == The font ==

/// A face of FreeType with its shapes of HarfBuzz, which puts letters together: ligatures, marks, joined
/// letters.
class TextWriter::Font {
public:
    explicit Font(std::string const& file) {
        if (FT_Init_FreeType(&library) != 0) {
            library = nullptr;
        } else if (FT_New_Face(library, file.c_str(), 0, &face) != 0 || FT_IS_SCALABLE(face) == 0) {
            _close();
        }
    }
    Font(Font const&) = delete;
    Font& operator=(Font const&) = delete;
    ~Font() { _close(); }

    bool isOpen() const { return face != nullptr; }

    TextMask write(std::string const& text, int height) {
        _setHeight(height);
        int const baseLine = static_cast<int>(std::lround(static_cast<double>(face->size->metrics.y_scale) *
                                                          face->ascender / 65536 / UNITS_PER_PIXEL));
        double pen = 0;
        std::vector<Glyph> glyphs;
        hb_buffer_t* const buffer = hb_buffer_create();
        for (Run const& run : runsOf(text)) {
            hb_buffer_clear_contents(buffer);
            hb_buffer_add_utf8(buffer, text.data(), static_cast<int>(text.size()), run.start,
                               static_cast<int>(run.length));
            hb_buffer_set_script(buffer, run.script);
            hb_buffer_set_direction(buffer, run.direction);
            hb_buffer_set_language(buffer, hb_language_from_string("en", -1));
            hb_shape(shapes, buffer, nullptr, 0);
            unsigned int count = 0;
            hb_glyph_info_t const* const infos = hb_buffer_get_glyph_infos(buffer, &count);
            hb_glyph_position_t const* const positions = hb_buffer_get_glyph_positions(buffer, &count);
            for (unsigned int i = 0; i < count; ++i) {
                glyphs.push_back({infos[i].codepoint, pen + positions[i].x_offset / UNITS_PER_PIXEL,
                                  positions[i].y_offset / UNITS_PER_PIXEL});
                pen += positions[i].x_advance / UNITS_PER_PIXEL;
            }
        }
        hb_buffer_destroy(buffer);
        TextMask mask = blank(pen, height);
        for (Glyph const& glyph : glyphs) {
            _draw(glyph, baseLine, mask);
        }
        return mask;
    }

private:
    struct Glyph {
        unsigned int index;
        double left;  // of its origin
        double up;    // above the base line
    };

    /// `height` is the distance of the face's lowest descent from its highest ascent.
    void _setHeight(int height) {
        if (height == setHeight) {
            return;
        }
        FT_Size_RequestRec request{};
        request.type = FT_SIZE_REQUEST_TYPE_REAL_DIM;
        request.height = height * static_cast<FT_Long>(UNITS_PER_PIXEL);
        FT_Request_Size(face, &request);
        setHeight = height;
        if (shapes == nullptr) {
            shapes = hb_ft_font_create_referenced(face);
            // Not fitted to whole pixels: the letters of a text keep their distances.
            hb_ft_font_set_load_flags(shapes, FT_LOAD_NO_HINTING);
        } else {
            hb_ft_font_changed(shapes);
        }
    }

    void _draw(Glyph const& glyph, int baseLine, TextMask& mask) const {
        if (FT_Load_Glyph(face, glyph.index, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0 ||
            face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) {
            return;
        }
        // Letters start between pixels where they have to: evenly spaced text is easier to read.
        double const whole = std::floor(glyph.left);
        FT_Outline_Translate(&face->glyph->outline, std::lround((glyph.left - whole) * UNITS_PER_PIXEL),
                             std::lround(glyph.up * UNITS_PER_PIXEL));
        if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0) {
            return;
        }
        FT_Bitmap const& bits = face->glyph->bitmap;
        for (int y = 0; y < static_cast<int>(bits.rows); ++y) {
            for (int x = 0; x < static_cast<int>(bits.width); ++x) {
                int const column = static_cast<int>(whole) + face->glyph->bitmap_left + x;
                int const row = baseLine - face->glyph->bitmap_top + y;
                if (column >= 0 && column < mask.width && row >= 0 && row < mask.height) {
                    unsigned char& place = pixelOf(mask, column, row);
                    place = std::max(place, bits.buffer[y * bits.pitch + x]);
                }
            }
        }
    }

    void _close() {
        hb_font_destroy(shapes);
        FT_Done_Face(face);
        FT_Done_FreeType(library);
        shapes = nullptr;
        face = nullptr;
        library = nullptr;
    }

    FT_Library library = nullptr;
    FT_Face face = nullptr;       // null: the file is no font
    hb_font_t* shapes = nullptr;  // of the face; null before the first size
    int setHeight = 0;            // pixels; 0: none yet
};

TextWriter::TextWriter(std::vector<std::string> const& fontFiles) {
    for (std::string const& file : fontFiles) {
        auto candidate = std::make_shared<Font>(file);
        if (candidate->isOpen()) {
            font = std::move(candidate);
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
    return font != nullptr ? font->write(withoutControls(text), height) : writeEasy(ascii(text), height);
}

std::string TextWriter::shortened(std::string const& text, int height, int widest) const {
    if (write(text, height).width <= widest) {
        return text;
    }
    std::vector<std::size_t> starts;
    for (Character const& character : charactersOf(text)) {
        if (starts.empty() || !isMark(character.code)) {
            starts.push_back(character.start);
        }
    }
    auto const keeping = [&](std::size_t count) {
        std::size_t const atEnd = count / 2;
        std::string const head = text.substr(0, starts[count - atEnd]);
        std::string const tail = atEnd > 0 ? text.substr(starts[starts.size() - atEnd]) : std::string();
        return head + (font != nullptr ? "\xE2\x80\xA6" : "...") + tail;
    };
    // The most characters that fit; at least none.
    std::size_t fitting = 0;
    std::size_t tooMany = starts.size();
    while (tooMany - fitting > 1) {
        std::size_t const middle = (fitting + tooMany) / 2;
        (write(keeping(middle), height).width <= widest ? fitting : tooMany) = middle;
    }
    return keeping(fitting);
}

}  // namespace vellum::viewport
