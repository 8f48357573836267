#include "viewport/files/images/picture_decoders.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include <tiffio.h>

namespace vellum::viewport {

namespace {

struct Close {
    void operator()(TIFF* file) const { TIFFClose(file); }
};
struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

constexpr tmsize_t MOST_BYTES_AT_ONCE = tmsize_t(1) << 30;  // as much as an image may have

using File = std::unique_ptr<TIFF, Close>;

struct Layout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t format = SAMPLEFORMAT_UINT;
    std::uint16_t planes = PLANARCONFIG_CONTIG;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    bool isTiled = false;
    bool hasAlpha = false;
    bool isMultiplied = false;  // the opacity is multiplied into the colors

    explicit Layout(TIFF* file) {
        TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
        TIFFGetFieldDefaulted(file, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLESPERPIXEL, &samples);
        TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLEFORMAT, &format);
        TIFFGetFieldDefaulted(file, TIFFTAG_PLANARCONFIG, &planes);
        TIFFGetField(file, TIFFTAG_PHOTOMETRIC, &photometric);
        TIFFGetFieldDefaulted(file, TIFFTAG_ORIENTATION, &orientation);
        isTiled = TIFFIsTiled(file) != 0;
        std::uint16_t extraCount = 0;
        std::uint16_t* extra = nullptr;
        TIFFGetFieldDefaulted(file, TIFFTAG_EXTRASAMPLES, &extraCount, &extra);
        hasAlpha = extraCount > 0 && extra != nullptr && extra[0] != EXTRASAMPLE_UNSPECIFIED;
        isMultiplied = hasAlpha && extra[0] == EXTRASAMPLE_ASSOCALPHA;
    }

    /// Whether rows can be taken as they are, with all their bits.
    bool isDeep() const {
        bool const isWord = bits == 16 && format == SAMPLEFORMAT_UINT;
        bool const isFloat = bits == 32 && format == SAMPLEFORMAT_IEEEFP;
        bool const isGray = photometric == PHOTOMETRIC_MINISBLACK;
        bool const isColor = photometric == PHOTOMETRIC_RGB && samples >= 3;
        return (isWord || isFloat) && (isGray || isColor) && planes == PLANARCONFIG_CONTIG && !isTiled &&
               orientation == ORIENTATION_TOPLEFT && samples >= 1 && samples <= 8;
    }
};

unsigned short dividedBy(unsigned short opacity, unsigned short part) {
    unsigned int const whole = 0xFFFF;
    return static_cast<unsigned short>(
        std::min<std::uint64_t>((std::uint64_t(part) * whole + opacity / 2U) / opacity, whole));
}

/// Colors of real numbers may be brighter than white.
float dividedBy(float opacity, float part) {
    return part / opacity;
}

/// Takes the opacity out of the colors of pixels that have one. What nothing is seen of keeps its colors.
template <class T>
void divideOpacityOut(T* pixels, std::size_t count) {
    for (T* pixel = pixels; pixel != pixels + 4 * count; pixel += 4) {
        for (std::size_t k = 0; k < 3 && pixel[3] > 0; ++k) {
            pixel[k] = dividedBy(pixel[3], pixel[k]);
        }
    }
}

template <class T>
bool decodeRows(TIFF* file, Layout const& layout, T opaque, T* pixels, unsigned int channels) {
    std::size_t const rowBytes = static_cast<std::size_t>(TIFFScanlineSize(file));
    std::size_t const rowSamples = std::size_t(layout.width) * layout.samples;
    if (rowBytes < rowSamples * sizeof(T)) {
        return false;
    }
    std::vector<T> row((rowBytes + sizeof(T) - 1) / sizeof(T));
    unsigned int const colors = layout.photometric == PHOTOMETRIC_RGB ? 3 : 1;
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        if (TIFFReadScanline(file, row.data(), y) < 0) {
            return false;
        }
        T* const start = pixels + std::size_t(layout.height - 1 - y) * layout.width * channels;
        T* to = start;
        for (std::uint32_t x = 0; x < layout.width; ++x, to += channels) {
            T const* const from = row.data() + std::size_t(x) * layout.samples;
            for (unsigned int k = 0; k < 3; ++k) {
                to[k] = from[colors == 3 ? k : 0];
            }
            if (channels == 4) {
                to[3] = layout.samples > colors ? from[colors] : opaque;
            }
        }
        if (channels == 4 && layout.isMultiplied) {
            divideOpacityOut(start, layout.width);
        }
    }
    return true;
}

bool decodeDeep(TIFF* file, Layout const& layout, VL_Image& image) {
    unsigned int const colors = layout.photometric == PHOTOMETRIC_RGB ? 3 : 1;
    unsigned int const channels = layout.hasAlpha && layout.samples > colors ? 4 : 3;
    if (!image.create(layout.width, layout.height, channels, layout.bits)) {
        return false;
    }
    return layout.bits == 16 ? decodeRows<unsigned short>(file, layout, 0xFFFF, image.getBuffer16(), channels)
                             : decodeRows<float>(file, layout, 1.0F, image.getBuffer32(), channels);
}

bool decodeShallow(TIFF* file, Layout const& layout, VL_Image& image) {
    unsigned int const channels = layout.hasAlpha ? 4 : 3;
    if (!image.create(layout.width, layout.height, channels, 8)) {
        return false;
    }
    std::size_t const count = std::size_t(layout.width) * layout.height;
    std::vector<std::uint32_t> pixels(count);
    if (TIFFReadRGBAImageOriented(file, layout.width, layout.height, pixels.data(), ORIENTATION_BOTLEFT, 1) ==
        0) {
        return false;
    }
    unsigned char* to = image.getBuffer();
    for (std::uint32_t const pixel : pixels) {
        // libtiff multiplies the opacity in.
        unsigned int const alpha = TIFFGetA(pixel);
        unsigned int const parts[3] = {TIFFGetR(pixel), TIFFGetG(pixel), TIFFGetB(pixel)};
        for (unsigned int const part : parts) {
            unsigned int const whole = channels == 4 && alpha > 0 ? (part * 255 + alpha / 2) / alpha : part;
            *to++ = static_cast<unsigned char>(whole > 255 ? 255 : whole);
        }
        if (channels == 4) {
            *to++ = static_cast<unsigned char>(alpha);
        }
    }
    return true;
}

}  // namespace

bool decodeTiff(std::string const& path, VL_Image& image) {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    std::unique_ptr<TIFFOpenOptions, FreeOptions> const options(TIFFOpenOptionsAlloc());
    if (options == nullptr) {
        return false;
    }
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), MOST_BYTES_AT_ONCE);
    // 'm': the file is read, not mapped; mapped it would end the process if it were cut off meanwhile.
    File const file(TIFFOpenExt(path.c_str(), "rm", options.get()));
    if (file == nullptr) {
        return false;
    }
    Layout const layout(file.get());
    return layout.isDeep() ? decodeDeep(file.get(), layout, image) : decodeShallow(file.get(), layout, image);
}

}  // namespace vellum::viewport
