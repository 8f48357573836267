#include "viewport/files/images/encode_picture.h"

#include <cerrno>
#include <cstring>

#include <png.h>

namespace vellum::viewport {

std::string encodePng(Picture const& picture, std::FILE* file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGBA;
    if (png_image_write_to_stdio(&image, file, 0, picture.pixels.data(), 4 * picture.width, nullptr) != 0) {
        return {};
    }
    return errno != 0 ? std::strerror(errno) : image.message;
}

}  // namespace vellum::viewport
