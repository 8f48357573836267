#include "viewport/files/images/encode_picture.h"

#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <vector>

#include <jpeglib.h>

namespace vellum::viewport {

namespace {

struct Errors {
    jpeg_error_mgr base;  // first, so that libjpeg's pointer to it is one to this
    std::jmp_buf landing;
    char message[JMSG_LENGTH_MAX];
};

[[noreturn]] void fail(j_common_ptr codec) {
    auto* const errors = reinterpret_cast<Errors*>(codec->err);
    codec->err->format_message(codec, errors->message);
    std::longjmp(errors->landing, 1);
}

// libjpeg reports errors by a jump, which must not skip a destructor: run() has no such locals.
class Writer {
public:
    Writer() {
        codec.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = fail;
        errors.base.output_message = [](j_common_ptr) {};
        errors.message[0] = '\0';
    }
    ~Writer() { jpeg_destroy_compress(&codec); }
    Writer(Writer const&) = delete;
    Writer& operator=(Writer const&) = delete;

    bool run(Picture const& picture, int quality, std::FILE* file, unsigned char* row) {
        if (setjmp(errors.landing) != 0) {
            return false;
        }
        jpeg_create_compress(&codec);
        jpeg_stdio_dest(&codec, file);
        codec.image_width = static_cast<JDIMENSION>(picture.width);
        codec.image_height = static_cast<JDIMENSION>(picture.height);
        codec.input_components = 3;
        codec.in_color_space = JCS_RGB;
        jpeg_set_defaults(&codec);
        jpeg_set_quality(&codec, quality, TRUE);
        // Thin lines and letters keep their colors.
        codec.comp_info[0].h_samp_factor = 1;
        codec.comp_info[0].v_samp_factor = 1;
        jpeg_start_compress(&codec, TRUE);
        for (int y = 0; y < picture.height; ++y) {
            unsigned char const* pixel = picture.pixels.data() + static_cast<std::size_t>(y) * 4 *
                                                                     static_cast<std::size_t>(picture.width);
            for (int x = 0; x < picture.width; ++x, pixel += 4) {
                row[3 * x] = pixel[0];
                row[3 * x + 1] = pixel[1];
                row[3 * x + 2] = pixel[2];
            }
            jpeg_write_scanlines(&codec, &row, 1);
        }
        jpeg_finish_compress(&codec);
        return true;
    }

    char const* message() const { return errors.message; }

private:
    jpeg_compress_struct codec{};
    Errors errors{};
};

}  // namespace

std::string encodeJpeg(Picture const& picture, int quality, std::FILE* file) {
    std::vector<unsigned char> row(3 * static_cast<std::size_t>(picture.width));
    Writer writer;
    if (writer.run(picture, quality, file, row.data())) {
        return {};
    }
    return errno != 0 ? std::strerror(errno) : writer.message();
}

}  // namespace vellum::viewport
