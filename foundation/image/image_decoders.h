#pragma once

/// \file
/// The decoders behind VL_Image::read(), one source for each library. Not installed.
///
/// Each reads a file from its beginning into an empty image. It checks the sizes that the file's header gives
/// by VL_Image::create() before it takes memory for them. When it answers false, the image may be in any
/// state.

#include <cstdio>

namespace vellum {

class VL_Image;

namespace image_decoders {

bool decodePng(std::FILE* file, VL_Image& image);   ///< By libpng.
bool decodeJpeg(std::FILE* file, VL_Image& image);  ///< By libjpeg-turbo.
bool decodeExr(std::FILE* file, VL_Image& image);   ///< By OpenEXR.
bool decodeHdr(std::FILE* file, VL_Image& image);   ///< Radiance, by stb_image.

}  // namespace image_decoders

}  // namespace vellum
