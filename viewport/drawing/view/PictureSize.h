#pragma once

#include <algorithm>

namespace vellum::viewport {

/// The size of a picture or of a window's drawing area, pixels.
struct PictureSize {
    /// The largest width and height of a picture, pixels.
    static constexpr int LARGEST = 16384;

    int width = 1280;  ///< 1 to LARGEST
    int height = 720;  ///< 1 to LARGEST

    double aspect() const { return static_cast<double>(width) / height; }

    /// The factor for sizes on the screen, which are given for a picture whose shorter side has 720 pixels.
    double scale() const { return std::min(width, height) / 720.0; }

    bool operator==(PictureSize const& other) const { return width == other.width && height == other.height; }
    bool operator!=(PictureSize const& other) const { return !(*this == other); }
};

/// A pixel of a picture, counted from its upper left corner.
struct Pixel {
    int x = 0;
    int y = 0;
};

/// How finely a picture is drawn: how many samples a pixel has along each side, and so how wide lines are.
struct Sampling {
    int perSide = 1;       ///< a pixel of the picture is the mean of this number squared
    double lineScale = 1;  ///< the width of a line of one pixel, in samples; larger in large pictures

    Sampling() = default;
    Sampling(int perSide, PictureSize const& size)
        : perSide(perSide), lineScale(perSide * std::max(1.0, size.scale())) {}

    float lineWidth(double pixels) const { return static_cast<float>(pixels * lineScale); }
};

}  // namespace vellum::viewport
