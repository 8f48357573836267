#pragma once

#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Finds a text of the window's interface in a picture of the window. It draws the text with the font and the
/// library that the window draws it with, and compares the pixels: bright letters over a dark ground of any
/// color.
class TextFinder {
public:
    /// \param text of which nothing bright is beside the ends
    /// \param scale of the screen's letters
    explicit TextFinder(std::string const& text, double scale = 1);

    /// The middle of the first place, in reading order; nothing where it is not seen.
    /// \param after no place above or left of it is taken
    std::optional<vellum::viewport::Pixel> find(vellum::viewport::Picture const& seen,
                                                vellum::viewport::Pixel after = {0, 0}) const;

private:
    bool _isAt(vellum::viewport::Picture const& seen, int left, int top) const;

    struct Sample {
        int x;
        int y;
        bool isLetter;
    };
    int width = 0;                // pixels
    int height = 0;               // pixels
    std::vector<Sample> samples;  // those whose color is certain, letters and ground mixed
};
