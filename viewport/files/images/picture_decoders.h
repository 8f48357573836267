#pragma once

#include "foundation/image/VL_Image.h"

#include <string>
#include <string_view>

/// Decoders of picture formats that VL_Image does not read. Each is false for a picture that is damaged,
/// larger than an image may be, or of a kind that it does not know; the image is then undefined.
namespace vellum::viewport {

/// TIFF through libtiff: 8 bits a channel, or 16 or 32 (floats) where the file has them in gray or RGB. The
/// first picture of the file; an opacity that is multiplied into the colors is divided out.
bool decodeTiff(std::string const& path, VL_Image& image);

/// WebP through libwebp: 8 bits a channel; of a moving picture the first one.
bool decodeWebp(std::string_view bytes, VL_Image& image);

/// TGA, BMP and GIF through stb_image, which reads damaged files carelessly: for a guarded process only. 8
/// bits a channel; of a moving picture the first one.
bool decodeWithStb(std::string_view bytes, VL_Image& image);

/// DDS with BC1 to BC5 blocks (DXT1 to DXT5, ATI1, ATI2) or pixels of up to 32 bits; the largest picture of
/// the file, without its smaller versions. 8 bits a channel; an opacity that is multiplied in (DXT2, DXT4, or
/// as the file says) is divided out. Of our own, for a guarded process.
bool decodeDds(std::string_view bytes, VL_Image& image);

/// The name of the format of a DDS file's pixels where decodeDds() does not know it, as in "BC7"; else empty.
std::string unknownDdsFormat(std::string_view bytes);

/// Makes an image of red, green, blue and opacity, upper row first; without an opacity where all is opaque.
bool takeRgba(unsigned char const* pixels, unsigned int width, unsigned int height, VL_Image& image);

}  // namespace vellum::viewport
