#pragma once

#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A picture of 8 bits per channel: red, green, blue, opacity; the top row first.
struct Picture {
    int width = 0;                      ///< pixels
    int height = 0;                     ///< pixels
    std::vector<unsigned char> pixels;  ///< 4 * width * height

    /// Writes the picture as a PNG file. It appears under its name complete or not at all: it is written to a
    /// temporary file in the same folder, which is then renamed and, on a failure, removed. An existing file
    /// is replaced, but only a regular one that the user may write; through a symbolic link the file that it
    /// points to. Interrupts wait until it is done. Gives the fault that kept it from being written, or nothing.
    std::optional<Fault> savePng(std::string const& path) const;

    /// Reads a PNG file of any kind.
    static Result<Picture> loadPng(std::string const& path);
};

}  // namespace vellum::viewport
