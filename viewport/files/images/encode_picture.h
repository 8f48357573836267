#pragma once

#include "viewport/files/images/Picture.h"

#include <cstdio>
#include <string>

/// \file
/// Pictures as bytes of their formats. Each function gives what went wrong, or an empty text.

namespace vellum::viewport {

std::string encodePng(Picture const& picture, std::FILE* file);

/// Without its opacity, which the format does not know.
std::string encodeJpeg(Picture const& picture, int quality, std::FILE* file);

/// As floating-point numbers: R, G, B and A, linear and multiplied with the opacity, as the format has them;
/// and, where depths were measured, those as "depth.Z".
std::string encodeExr(Picture const& picture, std::FILE* file);

}  // namespace vellum::viewport
