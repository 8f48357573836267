#include "foundation/image/VL_Image.h"
#include "foundation/image/image_decoders.h"

#include <csetjmp>
#include <vector>

#include <png.h>

namespace vellum::image_decoders {

namespace {

// Texts and the like are not read out; no more of them than this are kept in memory meanwhile.
constexpr png_uint_32 MOST_KEPT_CHUNKS = 16;

[[noreturn]] void fail(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void ignore(png_structp, png_const_charp) {}

// libpng reports errors by a jump, which must not skip a destructor. So each step is a method with no such
// locals, and the memory of the steps is held outside them.
class PngReader {
public:
    PngReader() = default;
    PngReader(PngReader const&) = delete;
    PngReader& operator=(PngReader const&) = delete;
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }

    bool readHeader(std::FILE* file) {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore);
        info = png != nullptr ? png_create_info_struct(png) : nullptr;
        if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
            return false;
        }
        png_set_user_limits(png, LARGEST_SIDE, LARGEST_SIDE);
        png_set_chunk_cache_max(png, MOST_KEPT_CHUNKS);
        png_init_io(png, file);
        png_read_info(png, info);

        // To RGB or RGBA of 8 or 16 bits, whatever the file has.
        png_set_expand(png);
        png_set_gray_to_rgb(png);
        unsigned short const one = 1;
        if (*reinterpret_cast<unsigned char const*>(&one) == 1) {
            png_set_swap(png);  // 16-bit numbers are big-endian in the file
        }
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
        return true;
    }

    bool readPixels(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png)) != 0) {
            return false;
        }
        png_read_image(png, rows);
        png_read_end(png, nullptr);  // reports a file that is truncated after its last pixel
        return true;
    }

    unsigned int width() const { return png_get_image_width(png, info); }
    unsigned int height() const { return png_get_image_height(png, info); }
    unsigned int channels() const { return png_get_channels(png, info); }
    unsigned int bits() const { return png_get_bit_depth(png, info); }

private:
    png_structp png = nullptr;
    png_infop info = nullptr;
};

}  // namespace

bool decodePng(std::FILE* file, VL_Image& image) {
    PngReader reader;
    if (!reader.readHeader(file) ||
        !image.create(reader.width(), reader.height(), reader.channels(), reader.bits())) {
        return false;
    }
    auto* pixels = image.getBuffer();
    if (pixels == nullptr) {
        pixels = reinterpret_cast<unsigned char*>(image.getBuffer16());
    }
    std::size_t const rowBytes = std::size_t{image.width()} * static_cast<unsigned int>(image.pixdepth()) / 8;
    std::vector<png_bytep> rows(image.height());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i] = pixels + (rows.size() - 1 - i) * rowBytes;
    }
    return reader.readPixels(rows.data());
}

}  // namespace vellum::image_decoders
