#include "viewport/files/images/picture_decoders.h"

#include <cstddef>
#include <limits>
#include <memory>

// Only the code for these formats is compiled, and none of it is visible outside this source.
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
#define STBI_MAX_DIMENSIONS 16384
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#include <stb/stb_image.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace vellum::viewport {

namespace {

struct Free {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

}  // namespace

bool decodeWithStb(std::string_view bytes, VL_Image& image) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return false;
    }
    auto const* const data = reinterpret_cast<stbi_uc const*>(bytes.data());
    int const size = static_cast<int>(bytes.size());
    int width = 0;
    int height = 0;
    int found = 0;
    std::unique_ptr<stbi_uc, Free> const pixels(
        stbi_load_from_memory(data, size, &width, &height, &found, 4));
    if (pixels == nullptr || width <= 0 || height <= 0) {
        return false;
    }
    // It gives all pictures of some formats an opacity.
    return takeRgba(pixels.get(), static_cast<unsigned int>(width), static_cast<unsigned int>(height), image);
}

}  // namespace vellum::viewport
