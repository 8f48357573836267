#include "viewport/files/images/Picture.h"

#include "viewport/files/images/encode_picture.h"
#include "viewport/files/images/output_file.h"

#include <png.h>

namespace vellum::viewport {

std::optional<Fault> Picture::savePng(std::string const& path) const {
    return save(path, PictureFormat::PNG);
}

std::optional<Fault> Picture::save(std::string const& path, PictureFormat format, int quality) const {
    return writeOutput(path, [&](std::FILE* file) {
        switch (format) {
        case PictureFormat::JPEG:
            return encodeJpeg(*this, quality, file);
        case PictureFormat::EXR:
            return encodeExr(*this, file);
        case PictureFormat::PNG:
            break;
        }
        return encodePng(*this, file);
    });
}

Result<Picture> Picture::loadPng(std::string const& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        return Fault{path, std::string("cannot be read: ") + image.message};
    }
    image.format = PNG_FORMAT_RGBA;
    Picture picture;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    picture.pixels.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0) {
        png_image_free(&image);
        return Fault{path, std::string("cannot be read: ") + image.message};
    }
    return picture;
}

}  // namespace vellum::viewport
