#include "foundation/image/VL_Image.h"
#include "foundation/image/image_decoders.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

// Only the code for Radiance files is compiled, and none of it is visible outside this source.
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_HDR
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
#define STBI_MAX_DIMENSIONS 16384
#include <stb/stb_image.h>

namespace vellum::image_decoders {

namespace {

// Passes a file to stb_image and detects reads past its end. stb_image reads zeros there and reports no
// error; some versions decode endless runs of length 0 from them. So it is given ones instead, which end
// every run and every line.
class Source {
public:
    explicit Source(std::FILE* opened) : file(opened) {
        std::fseek(file, 0, SEEK_END);
        length = std::ftell(file);
        std::rewind(file);
    }

    bool isOverrun() const { return overrun; }
    std::int64_t bytes() const { return length; }

    static int read(void* user, char* data, int size) {
        auto& self = *static_cast<Source*>(user);
        auto const wanted = static_cast<std::size_t>(size);
        std::size_t const found = std::fread(data, 1, wanted, self.file);
        // A read of the whole buffer is a refill, which may be short; any other wants exactly these bytes.
        if (wanted == sizeof(stbi__context::buffer_start) && found > 0) {
            return static_cast<int>(found);
        }
        if (found < wanted) {
            self.overrun = true;
            std::memset(data + found, 0xFF, wanted - found);
        }
        return found == 0 && wanted == sizeof(stbi__context::buffer_start) ? 1 : size;
    }

    static void skip(void* user, int count) { std::fseek(static_cast<Source*>(user)->file, count, SEEK_CUR); }

    static int isAtEnd(void* user) {
        auto const& self = *static_cast<Source*>(user);
        return std::ftell(self.file) >= self.length ? 1 : 0;
    }

private:
    std::FILE* file;
    long length = 0;
    bool overrun = false;
};

constexpr stbi_io_callbacks CALLBACKS{Source::read, Source::skip, Source::isAtEnd};

// The minimum size of an image: four channels in runs of at most 127, where a line may be run-length encoded
// at all. A shorter file is truncated, which this check detects without decoding.
std::int64_t fewestBytes(std::int64_t const& width, std::int64_t const& height) {
    return height * (width < 8 ? 4 * width : 4 + 4 * 2 * ((width + 126) / 127));
}

}  // namespace

bool decodeHdr(std::FILE* file, VL_Image& image) {
    int width = 0;
    int height = 0;
    int channels = 0;
    Source header(file);
    if (stbi_info_from_callbacks(&CALLBACKS, &header, &width, &height, &channels) == 0 || width < 1 ||
        height < 1 || header.isOverrun() || header.bytes() < fewestBytes(width, height) ||
        !image.create(static_cast<unsigned int>(width), static_cast<unsigned int>(height), 3, 32)) {
        return false;
    }
    Source content(file);
    float* const decoded = stbi_loadf_from_callbacks(&CALLBACKS, &content, &width, &height, &channels, 3);
    if (decoded == nullptr) {
        return false;
    }
    // The sizes again: the file may have been changed meanwhile.
    bool const isWhole = !content.isOverrun() && width == static_cast<int>(image.width()) &&
                         height == static_cast<int>(image.height());
    if (isWhole) {
        std::size_t const rowLength = std::size_t{image.width()} * 3;
        for (std::size_t row = 0; row < image.height(); ++row) {
            std::copy_n(decoded + row * rowLength, rowLength,
                        image.getBuffer32() + (image.height() - 1 - row) * rowLength);
        }
    }
    stbi_image_free(decoded);
    return isWhole;
}

}  // namespace vellum::image_decoders
