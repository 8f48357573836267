#include "viewport/drawing/subjects/TextureStore.h"

#include <GL/glew.h>

namespace vellum::viewport {

TextureStore::~TextureStore() {
    for (auto const& entry : names) {
        layer.unLoadTextureColor(entry.second);
    }
}

unsigned int TextureStore::nameOf(VL_Image const& image) {
    auto const [entry, isNew] = names.emplace(&image, 0);
    if (isNew) {
        void const* const pixels = image.bitdepth() == 8    ? static_cast<void const*>(image.getBuffer())
                                   : image.bitdepth() == 16 ? static_cast<void const*>(image.getBuffer16())
                                                            : static_cast<void const*>(image.getBuffer32());
        // The rows of an image follow each other without gaps.
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        layer.loadTextureColor(image.width(), image.height(), image.bitdepth(), image.pixdepth(), pixels,
                               entry->second, TEXTURE_REPEAT);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    }
    return entry->second;
}

}  // namespace vellum::viewport
