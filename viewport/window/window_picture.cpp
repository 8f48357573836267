#include "viewport/window/window_picture.h"

#include <cstddef>

#include <GL/glew.h>

namespace vellum::viewport {

Picture windowPicture(PictureSize const& size) {
    Picture picture;
    picture.width = size.width;
    picture.height = size.height;
    std::size_t const rowBytes = 4 * static_cast<std::size_t>(size.width);
    picture.pixels.resize(rowBytes * static_cast<std::size_t>(size.height));
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    // GL's first row is the lowest.
    for (int row = 0; row < size.height; ++row) {
        glReadPixels(0, row, size.width, 1, GL_RGBA, GL_UNSIGNED_BYTE,
                     picture.pixels.data() + rowBytes * static_cast<std::size_t>(size.height - 1 - row));
    }
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) {
        picture.pixels[i] = 255;
    }
    return picture;
}

}  // namespace vellum::viewport
