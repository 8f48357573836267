#pragma once

/// \file
/// The decoders of VL_Image::read(), one source per library. Not installed.
///
/// Each reads a file from its beginning into an empty image. VL_Image::create() checks the sizes of the
/// file's header before memory is allocated for them. On false, the image may be in any state.

#include <cstdio>

namespace vellum {

class VL_Image;

namespace image_decoders {

constexpr unsigned int LARGEST_SIDE = 16384;  ///< of an image, pixels

bool decodePng(std::FILE* file, VL_Image& image);   ///< By libpng.
bool decodeJpeg(std::FILE* file, VL_Image& image);  ///< By libjpeg-turbo.
bool decodeExr(std::FILE* file, VL_Image& image);   ///< By OpenEXR.
bool decodeHdr(std::FILE* file, VL_Image& image);   ///< Radiance, by stb_image.

}  // namespace image_decoders

}  // namespace vellum
