#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A line of text as the part that it covers of each pixel.
struct TextMask {
    int width = 0;                        ///< pixels
    int height = 0;                       ///< pixels; the same for all texts of a size
    std::vector<unsigned char> coverage;  ///< width * height, the top row first; 255 is all of a pixel
};

/// Writes lines of UTF-8 in a plain face: in a font of the system, with every script that it has. Where there
/// is no font, it writes the simple letters that come with the program, which are ASCII only.
///
/// A character that the font lacks is a box. One that the simple letters lack is '?', and so is a control
/// character. Text in both directions is written in runs, one for each direction. Numbers within a text from
/// right to left are runs of their own.
///
/// Copies share the font. Not thread-safe.
class TextWriter {
public:
    /// Takes the first of the files that is a font. Fonts are trusted: only the system's administrator must
    /// be able to change them.
    explicit TextWriter(std::vector<std::string> const& fontFiles = systemFonts());

    /// `height` is that of a line of text, pixels, from 1 on.
    TextMask write(std::string const& text, int height) const;

    /// The text, with an ellipsis in place of its middle where it is wider than so many pixels. The end is
    /// kept, because it often tells names apart.
    std::string shortened(std::string const& text, int height, int widest) const;

    bool hasFont() const { return font != nullptr; }

    /// Where the usual plain faces are installed.
    static std::vector<std::string> systemFonts();

private:
    class Font;

    std::shared_ptr<Font> font;  // null where there is none
};

}  // namespace vellum::viewport
