#pragma once

#include "viewport/files/images/PictureFormat.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A picture of 8 bits per channel: red, green, blue, opacity; the top row first. Colors are not multiplied
/// with the opacity.
struct Picture {
    static constexpr int STANDARD_QUALITY = 90;

    int width = 0;                      ///< pixels
    int height = 0;                     ///< pixels
    std::vector<unsigned char> pixels;  ///< 4 * width * height

    /// What lies behind each pixel: its distance from the eye along the direction of view, in units of the
    /// files; infinite where there is nothing. Only the format EXR has it; empty: it was not measured.
    std::vector<float> depths = {};

    /// Writes the picture as a PNG file, see save().
    std::optional<Fault> savePng(std::string const& path) const;

    /// Writes the picture, see writeOutput().
    /// \param quality 1 to 100, of JPEG only: the larger, the fewer artifacts.
    std::optional<Fault> save(std::string const& path, PictureFormat format,
                              int quality = STANDARD_QUALITY) const;

    /// Reads a PNG file of any kind.
    static Result<Picture> loadPng(std::string const& path);
};

}  // namespace vellum::viewport
