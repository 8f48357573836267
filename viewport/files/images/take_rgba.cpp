#include "viewport/files/images/picture_decoders.h"

#include <algorithm>
#include <cstddef>

namespace vellum::viewport {

bool takeRgba(unsigned char const* pixels, unsigned int width, unsigned int height, VL_Image& image) {
    std::size_t const count = std::size_t(width) * height;
    bool isOpaque = true;
    for (std::size_t i = 0; i < count && isOpaque; ++i) {
        isOpaque = pixels[4 * i + 3] == 255;
    }
    unsigned int const channels = isOpaque ? 3 : 4;
    if (!image.create(width, height, channels, 8)) {
        return false;
    }
    unsigned char* to = image.getBuffer();
    for (std::size_t row = height; row-- > 0;) {
        unsigned char const* from = pixels + 4 * row * width;
        for (std::size_t column = 0; column < width; ++column, from += 4) {
            to = std::copy_n(from, channels, to);
        }
    }
    return true;
}

}  // namespace vellum::viewport
