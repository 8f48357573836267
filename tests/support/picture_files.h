#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Picture files for tests, written by the formats' own libraries. Pixels are given by a function of column,
/// row from the top, and channel.
namespace picture_files {

/// A sample as the file stores it: integers of the file's depth.
using Sample = std::function<unsigned int(std::size_t x, std::size_t yFromTop, std::size_t channel)>;
using FloatSample = std::function<float(std::size_t x, std::size_t yFromTop, std::size_t channel)>;

struct Png {
    unsigned int width = 0;
    unsigned int height = 0;
    int bits = 8;
    int colorType = 2;  // PNG_COLOR_TYPE_...
    bool isInterlaced = false;
    std::vector<std::array<unsigned char, 3>> palette = {};
    std::vector<unsigned char> paletteAlpha = {};       // a tRNS chunk of a palette picture
    std::vector<unsigned short> transparentColor = {};  // a tRNS chunk of a gray (1) or RGB (3) picture
};
void writePng(std::string const& path, Png const& png, Sample const& sample);

enum class JpegColors { gray, rgb, cmyk, adobeCmyk };
void writeJpeg(std::string const& path, unsigned int width, unsigned int height, JpegColors colors,
               bool isProgressive, Sample const& sample);

struct ExrChannel {
    std::string name;
    int type = 2;  // Imf::PixelType: 0 integer, 1 half, 2 float
    int sampling = 1;
};
struct Exr {
    int left = 0;  // of the data window
    int top = 0;
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<ExrChannel> channels = {};
    int compression = 3;        // Imf::Compression; 3 is ZIP
    unsigned int tileSize = 0;  // 0 for lines
};
void writeExr(std::string const& path, Exr const& exr, FloatSample const& sample);

/// A Radiance file with these RGBE bytes; run-length encoded lines need a width of 8 or more.
void writeHdr(std::string const& path, unsigned int width, unsigned int height, bool isRunLengthEncoded,
              std::function<std::array<unsigned char, 4>(std::size_t x, std::size_t yFromTop)> const& pixel);

}  // namespace picture_files
