#include "foundation/image/VL_Image.h"
#include "foundation/image/image_decoders.h"

#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <vector>

#include <jpeglib.h>

#include <jerror.h>

namespace vellum::image_decoders {

namespace {

// Each scan of a progressive file decodes the whole image; about ten are usual. A small file with thousands
// of scans would take hours.
constexpr int MOST_SCANS = 500;

struct Errors {
    jpeg_error_mgr base;  // first, so that libjpeg's pointer to it is one to this
    std::jmp_buf landing;
};

[[noreturn]] void fail(j_common_ptr codec) {
    std::longjmp(reinterpret_cast<Errors*>(codec->err)->landing, 1);
}

// libjpeg reports damage as a warning (level -1) and continues with gray. Three warnings are harmless.
void failOnDamage(j_common_ptr codec, int level) {
    int const code = codec->err->msg_code;
    bool const harmless = code == JWRN_EXTRANEOUS_DATA || code == JWRN_ADOBE_XFORM || code == JWRN_JFIF_MAJOR;
    if (level < 0 && !harmless) {
        fail(codec);
    }
}

void failOnManyScans(j_common_ptr codec) {
    if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > MOST_SCANS) {
        fail(codec);
    }
}

void ignore(j_common_ptr) {}

// libjpeg reports errors by a jump, which must not skip a destructor. So each step is a method with no such
// locals, and the memory of the steps is held outside them.
class JpegReader {
public:
    JpegReader() {
        codec.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = fail;
        errors.base.emit_message = failOnDamage;
        errors.base.output_message = ignore;
        progress.progress_monitor = failOnManyScans;
    }
    JpegReader(JpegReader const&) = delete;
    JpegReader& operator=(JpegReader const&) = delete;
    ~JpegReader() { jpeg_destroy_decompress(&codec); }

    bool readHeader(std::FILE* file) {
        if (setjmp(errors.landing) != 0) {
            return false;
        }
        jpeg_create_decompress(&codec);
        codec.progress = &progress;
        jpeg_stdio_src(&codec, file);
        jpeg_read_header(&codec, TRUE);
        bool const isCmyk = codec.jpeg_color_space == JCS_CMYK || codec.jpeg_color_space == JCS_YCCK;
        codec.out_color_space = isCmyk ? JCS_CMYK : JCS_RGB;
        return true;
    }

    bool readPixels(unsigned char* pixels, unsigned char* cmykRow) {
        if (setjmp(errors.landing) != 0) {
            return false;
        }
        jpeg_start_decompress(&codec);
        while (codec.output_scanline < codec.output_height) {
            // The format stores the top row first, OpenGL the bottom row.
            std::size_t const row = codec.output_height - 1 - codec.output_scanline;
            unsigned char* const target = pixels + row * codec.output_width * 3;
            JSAMPROW line = codec.out_color_space == JCS_CMYK ? cmykRow : target;
            jpeg_read_scanlines(&codec, &line, 1);
            if (line == cmykRow) {
                _convertRow(cmykRow, target);
            }
        }
        jpeg_finish_decompress(&codec);
        return true;
    }

    unsigned int width() const { return codec.image_width; }
    unsigned int height() const { return codec.image_height; }

private:
    // The light that the inks let through. Adobe's programs store the complement of the ink.
    void _convertRow(unsigned char const* cmyk, unsigned char* rgb) const {
        // XOR with 255 is 255 - x.
        int const flip = codec.saw_Adobe_marker != FALSE ? 0 : 255;
        for (std::size_t i = 0; i < codec.output_width; ++i) {
            int const black = cmyk[4 * i + 3] ^ flip;
            for (std::size_t k = 0; k < 3; ++k) {
                rgb[3 * i + k] = static_cast<unsigned char>(((cmyk[4 * i + k] ^ flip) * black + 127) / 255);
            }
        }
    }

    jpeg_decompress_struct codec{};
    Errors errors{};
    jpeg_progress_mgr progress{};
};

}  // namespace

bool decodeJpeg(std::FILE* file, VL_Image& image) {
    JpegReader reader;
    if (!reader.readHeader(file) || !image.create(reader.width(), reader.height(), 3, 8)) {
        return false;
    }
    std::vector<unsigned char> cmykRow(std::size_t{image.width()} * 4);
    return reader.readPixels(image.getBuffer(), cmykRow.data());
}

}  // namespace vellum::image_decoders
