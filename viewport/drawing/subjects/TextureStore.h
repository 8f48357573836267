#pragma once

#include "foundation/image/VL_Image.h"
#include "foundation/raster/Core_RL.h"

#include <map>

namespace vellum::viewport {

/// The textures of a scene as OpenGL has them, each image once. The context that it loads them into must be
/// current until its end. The layer must outlive it, and so must the images.
class TextureStore {
public:
    explicit TextureStore(Core_RL& layer) : layer(layer) {}
    ~TextureStore();
    TextureStore(TextureStore const&) = delete;
    TextureStore& operator=(TextureStore const&) = delete;

    /// The name of the image's texture, which is loaded at the first call for an image.
    unsigned int nameOf(VL_Image const& image);

private:
    Core_RL& layer;
    std::map<VL_Image const*, unsigned int> names;
};

}  // namespace vellum::viewport
