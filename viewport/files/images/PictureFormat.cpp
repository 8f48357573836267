#include "viewport/files/images/PictureFormat.h"

#include "viewport/files/images/output_file.h"
#include "viewport/text/lower_case.h"

#include <filesystem>

namespace vellum::viewport {

char const* const PICTURE_EXTENSIONS = ".png, .jpg, .jpeg, .exr";

std::optional<PictureFormat> pictureFormatOf(std::string const& path) {
    std::string const extension = lowerCase(std::filesystem::path(path).extension().string());
    if (extension == ".png") {
        return PictureFormat::PNG;
    }
    if (extension == ".jpg" || extension == ".jpeg") {
        return PictureFormat::JPEG;
    }
    if (extension == ".exr") {
        return PictureFormat::EXR;
    }
    return isWrittenStraight(path) ? std::optional<PictureFormat>(PictureFormat::PNG) : std::nullopt;
}

}  // namespace vellum::viewport
