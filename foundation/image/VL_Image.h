#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/export.h"

#include <cstddef>
#include <memory>

namespace vellum {

/// An image in main memory: textures of effects are read into it and uploaded from it.
///
/// Use:
///
///     VL_Image image;
///     if (image.read("ocean.exr")) {
///         upload(image.width(), image.height(), image.pixdepth() / image.bitdepth(), image.getBuffer32());
///     }
///
/// Pixels: rows follow each other without gaps, the bottom row first, as OpenGL has them, whatever the
/// format of the file; within a row pixels run from left to right, channels of a pixel are neighbors in the
/// order red, green, blue, alpha. Channels have 8 or 16 bits (unsigned integers, 0 to the largest number is 0
/// to 1) or 32 bits (floats, linear, of any range). The alpha channel is as stored in the file, neither
/// multiplied in nor divided out.
///
/// An image is at most 16,384 pixels wide and high, has at most 256 Mi pixels and needs at most 1 GiB.
///
/// It does not write files, convert between depths, or apply color profiles and orientation tags.
class VL_FOUNDATION_EXPORT VL_Image {
public:
    VL_Image();                           ///< The empty image.
    VL_Image(VL_Image const& other);      ///< A copy of the pixels.
    VL_Image(VL_Image&& other) noexcept;  ///< The other image is empty afterwards.
    VL_Image& operator=(VL_Image other) noexcept;
    ~VL_Image();

    // == Contents ==

    /// Reads an image file, which replaces the present contents. The format is detected from the first bytes,
    /// not from the name:
    ///
    /// | Format                   | Gives                                                                   |
    /// |--------------------------|-------------------------------------------------------------------------|
    /// | PNG                      | 8 bits a channel, or 16 for 16-bit files; RGB, or RGBA with an alpha    |
    /// |                          | channel or a transparent color                                         |
    /// | JPEG                     | 8 bits, RGB                                                             |
    /// | OpenEXR                  | 32 bits, RGB or RGBA of the data window; half, float and integer files  |
    /// |                          | with one part, flat, with channels R, G, B or Y, and A, at full         |
    /// |                          | resolution; layers are left out                                         |
    /// | Radiance HDR             | 32 bits, RGB; rows from top to bottom (-Y +X) only                      |
    ///
    /// Gray and palette images become RGB or RGBA, because textures need these formats; CMYK becomes RGB.
    ///
    /// \return false for a file that is missing, not a regular file, of another format, damaged, truncated,
    ///     or larger than an image may be. The image is empty then. Sizes are checked before memory is
    ///     allocated for them. Never throws.
    bool read(VL_String const& path);

    /// Replaces the present contents by an image of these sizes whose channels are all 0.
    /// \param channels 1 to 4.
    /// \param bitsPerChannel 8, 16 or 32.
    /// \return false for sizes that an image cannot have or when memory is insufficient; the image is empty
    ///     then.
    bool create(unsigned int const& width, unsigned int const& height, unsigned int const& channels,
                unsigned int const& bitsPerChannel);

    void destroy();  ///< Makes the image empty and releases its memory.

    // == Sizes ==
    // All are 0 for the empty image.

    unsigned int width() const { return columns; }  ///< In pixels.
    unsigned int height() const { return rows; }    ///< In pixels.
    int pixdepth() const { return pixelBits; }      ///< Bits of a pixel: channels times bitdepth().
    int bitdepth() const { return channelBits; }    ///< Bits of a channel: 8, 16 or 32.

    // == Pixels ==
    // The first channel of the lower left pixel. Null when the channels have another depth, and for the empty
    // image. Valid until the contents are replaced.

    unsigned char* getBuffer();  ///< For 8 bits a channel.
    unsigned char const* getBuffer() const;
    unsigned short* getBuffer16();  ///< For 16 bits a channel, in the byte order of the machine.
    unsigned short const* getBuffer16() const;
    float* getBuffer32();  ///< For 32 bits a channel.
    float const* getBuffer32() const;

private:
    struct Release {
        void operator()(void* memory) const;
    };

    std::size_t _bytes() const;

    unsigned int columns = 0;
    unsigned int rows = 0;
    int pixelBits = 0;
    int channelBits = 0;
    std::unique_ptr<void, Release> pixels;  // of calloc; null for the empty image
};

}  // namespace vellum
