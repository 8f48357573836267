#pragma once

#include "foundation/image/VL_Image.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Reads an image file that a user named for a texture. A file that cannot be opened or decoded is a fault.
Result<std::shared_ptr<VL_Image const>> readTexture(std::string const& path);

/// Decodes an image file; null where it is not one of the formats of VL_Image or damaged.
std::shared_ptr<VL_Image const> readImage(std::string const& path);

/// The same for the bytes of an image file that lie in memory, as in meshes that embed their textures.
std::shared_ptr<VL_Image const> readImage(std::vector<unsigned char> const& bytes);

}  // namespace vellum::viewport
