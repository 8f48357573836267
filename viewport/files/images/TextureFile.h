#pragma once

#include "foundation/image/VL_Image.h"
#include "viewport/files/common/Progress.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The formats of pictures, for messages.
constexpr char PICTURE_FORMATS[] = "PNG, JPEG, EXR, HDR, TIFF, WebP, TGA, BMP, GIF or DDS";

/// Reads an image file that a user named for a texture. A file that cannot be opened or decoded is a fault.
/// \param progress as of readImage()
Result<std::shared_ptr<VL_Image const>> readTexture(std::string const& path, Progress const& progress = {});

/// Decodes an image file of one of the formats above, which its first bytes tell; null where it is of another
/// format or damaged. Formats without a decoder that damaged files cannot harm are decoded in a process of
/// their own. \param progress gets 0 bytes of 0: before the decoding and, in a process of its own, during it
std::shared_ptr<VL_Image const> readImage(std::string const& path, Progress const& progress = {});

/// The same for the bytes of an image file that lie in memory, as in meshes that embed their textures.
std::shared_ptr<VL_Image const> readImage(std::vector<unsigned char> const& bytes,
                                          Progress const& progress = {});

/// Why readImage() gives null for a file, as a clause: "is a DDS file of BC7, which is not read".
std::string unreadableReason(std::string const& path);
std::string unreadableReason(std::vector<unsigned char> const& bytes);

}  // namespace vellum::viewport
