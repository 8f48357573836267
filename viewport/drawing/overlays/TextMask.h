#pragma once

#include <string>
#include <vector>

namespace vellum::viewport {

/// A line of text as the part that it covers of each pixel.
struct TextMask {
    int width = 0;                        ///< pixels
    int height = 0;                       ///< pixels; the same for all texts of a size
    std::vector<unsigned char> coverage;  ///< width * height, the top row first; 255 is all of a pixel
};

/// Writes text in a plain face: in a TrueType font of the system, or where there is none in the simple letters that
/// come with the program. ASCII; other characters are shown as '?'.
class TextWriter {
public:
    /// The first of the files that is a font. Nobody else than the system's administrator must be able to change
    /// them: fonts are trusted.
    explicit TextWriter(std::vector<std::string> const& fontFiles = systemFonts());

    /// `height` is that of a line of text, pixels, from 1 on.
    TextMask write(std::string const& text, int height) const;

    bool hasFont() const { return !typeface.empty(); }

    /// Where the usual plain faces are installed.
    static std::vector<std::string> systemFonts();

private:
    std::vector<unsigned char> typeface;  // the file's bytes; empty where there is none
};

}  // namespace vellum::viewport
