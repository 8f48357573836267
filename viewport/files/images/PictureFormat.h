#pragma once

#include <optional>
#include <string>

namespace vellum::viewport {

/// The formats that pictures are written in.
enum class PictureFormat { PNG, JPEG, EXR };

/// The names of the formats for messages: ".png, .jpg, .jpeg, .exr".
extern char const* const PICTURE_EXTENSIONS;

/// The format that a picture of this name is written in: that of its extension, in any case. What is no file
/// of its own, like
/// "-", /dev/stdout, a pipe or a device, is a PNG where the name says nothing else. Nothing for all other
/// names.
std::optional<PictureFormat> pictureFormatOf(std::string const& path);

}  // namespace vellum::viewport
