#include "tests/support/picture_files.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>
#include <ImfTiledOutputFile.h>
#include <half.h>

#include <jpeglib.h>
#include <png.h>

namespace picture_files {

// == PNG ==

void writePng(std::string const& path, Png const& png, Sample const& sample) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(writer);
    png_init_io(writer, file);
    png_set_IHDR(writer, info, png.width, png.height, png.bits, png.colorType,
                 png.isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_color> palette;
    for (auto const& entry : png.palette) {
        palette.push_back({entry[0], entry[1], entry[2]});
    }
    if (!palette.empty()) {
        png_set_PLTE(writer, info, palette.data(), static_cast<int>(palette.size()));
    }
    png_color_16 transparent{};
    if (!png.paletteAlpha.empty()) {
        png_set_tRNS(writer, info, png.paletteAlpha.data(), static_cast<int>(png.paletteAlpha.size()),
                     nullptr);
    } else if (png.transparentColor.size() == 1) {
        transparent.gray = png.transparentColor[0];
        png_set_tRNS(writer, info, nullptr, 0, &transparent);
    } else if (png.transparentColor.size() == 3) {
        transparent.red = png.transparentColor[0];
        transparent.green = png.transparentColor[1];
        transparent.blue = png.transparentColor[2];
        png_set_tRNS(writer, info, nullptr, 0, &transparent);
    }
    png_write_info(writer, info);

    std::size_t const channels = png_get_channels(writer, info);
    std::size_t const rowBytes = png_get_rowbytes(writer, info);
    std::vector<std::vector<unsigned char>> rows(png.height, std::vector<unsigned char>(rowBytes, 0));
    std::vector<png_bytep> pointers;
    for (std::size_t y = 0; y < png.height; ++y) {
        for (std::size_t i = 0; i < png.width * channels; ++i) {
            unsigned int const value = sample(i / channels, y, i % channels);
            auto const bits = static_cast<std::size_t>(png.bits);
            if (bits == 16) {
                rows[y][2 * i] = static_cast<unsigned char>(value >> 8);
                rows[y][2 * i + 1] = static_cast<unsigned char>(value);
            } else {
                std::size_t const shift = 8 - bits - i * bits % 8;
                rows[y][i * bits / 8] = static_cast<unsigned char>(rows[y][i * bits / 8] | value << shift);
            }
        }
        pointers.push_back(rows[y].data());
    }
    png_write_image(writer, pointers.data());
    png_write_end(writer, nullptr);
    png_destroy_write_struct(&writer, &info);
    std::fclose(file);
}

// == JPEG ==

void writeJpeg(std::string const& path, unsigned int width, unsigned int height, JpegColors colors,
               bool isProgressive, Sample const& sample) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    jpeg_stdio_dest(&codec, file);
    codec.image_width = width;
    codec.image_height = height;
    codec.input_components = colors == JpegColors::gray ? 1 : colors == JpegColors::rgb ? 3 : 4;
    codec.in_color_space = colors == JpegColors::gray  ? JCS_GRAYSCALE
                           : colors == JpegColors::rgb ? JCS_RGB
                                                       : JCS_CMYK;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, 100, TRUE);
    if (colors == JpegColors::cmyk) {
        codec.write_Adobe_marker = FALSE;
    }
    if (isProgressive) {
        jpeg_simple_progression(&codec);
    }
    jpeg_start_compress(&codec, TRUE);
    auto const channels = static_cast<std::size_t>(codec.input_components);
    std::vector<unsigned char> row(width * channels);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<unsigned char>(sample(i / channels, y, i % channels));
        }
        JSAMPROW line = row.data();
        jpeg_write_scanlines(&codec, &line, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    std::fclose(file);
}

// == OpenEXR ==

void writeExr(std::string const& path, Exr const& exr, FloatSample const& sample) {
    auto const width = static_cast<int>(exr.width);
    auto const height = static_cast<int>(exr.height);
    Imath::Box2i const window({exr.left, exr.top}, {exr.left + width - 1, exr.top + height - 1});
    Imf::Header header(width, height);
    header.dataWindow() = window;
    header.compression() = static_cast<Imf::Compression>(exr.compression);
    for (ExrChannel const& channel : exr.channels) {
        header.channels().insert(channel.name, Imf::Channel(static_cast<Imf::PixelType>(channel.type),
                                                            channel.sampling, channel.sampling));
    }

    // One buffer for each channel, of the size that its type and sampling rate ask for.
    std::vector<std::vector<unsigned char>> buffers;
    Imf::FrameBuffer frame;
    for (std::size_t k = 0; k < exr.channels.size(); ++k) {
        ExrChannel const& channel = exr.channels[k];
        auto const type = static_cast<Imf::PixelType>(channel.type);
        auto const step = static_cast<std::size_t>(channel.sampling);
        std::size_t const bytes = type == Imf::HALF ? 2 : 4;
        std::size_t const columns = (exr.width + step - 1) / step;
        std::size_t const rows = (exr.height + step - 1) / step;
        buffers.emplace_back(columns * rows * bytes);
        for (std::size_t y = 0; y < rows; ++y) {
            for (std::size_t x = 0; x < columns; ++x) {
                unsigned char* const place = buffers.back().data() + (y * columns + x) * bytes;
                float const value = sample(x * step, y * step, k);
                if (type == Imf::HALF) {
                    *reinterpret_cast<half*>(place) = half(value);
                } else if (type == Imf::FLOAT) {
                    *reinterpret_cast<float*>(place) = value;
                } else {
                    *reinterpret_cast<unsigned int*>(place) = static_cast<unsigned int>(value);
                }
            }
        }
        frame.insert(channel.name, Imf::Slice::Make(type, buffers.back().data(), window, bytes,
                                                    bytes * columns, channel.sampling, channel.sampling));
    }
    if (exr.tileSize == 0) {
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(frame);
        file.writePixels(height);
    } else {
        header.setTileDescription(Imf::TileDescription(exr.tileSize, exr.tileSize));
        Imf::TiledOutputFile file(path.c_str(), header);
        file.setFrameBuffer(frame);
        file.writeTiles(0, file.numXTiles() - 1, 0, file.numYTiles() - 1);
    }
}

// == Radiance ==

void writeHdr(std::string const& path, unsigned int width, unsigned int height, bool isRunLengthEncoded,
              std::function<std::array<unsigned char, 4>(std::size_t x, std::size_t yFromTop)> const& pixel) {
    std::ofstream file(path, std::ios::binary);
    file << "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " << height << " +X " << width << "\n";
    for (std::size_t y = 0; y < height; ++y) {
        if (!isRunLengthEncoded) {
            for (std::size_t x = 0; x < width; ++x) {
                for (unsigned char const byte : pixel(x, y)) {
                    file.put(static_cast<char>(byte));
                }
            }
            continue;
        }
        file.put(2).put(2).put(static_cast<char>(width >> 8)).put(static_cast<char>(width));
        for (std::size_t k = 0; k < 4; ++k) {
            // A run of the first half when it is one color, else literals.
            std::size_t x = 0;
            while (x < width) {
                std::size_t run = 1;
                while (x + run < width && run < 127 && pixel(x + run, y)[k] == pixel(x, y)[k]) {
                    ++run;
                }
                file.put(static_cast<char>(run > 1 ? 128 + run : 1));
                file.put(static_cast<char>(pixel(x, y)[k]));
                x += run;
            }
        }
    }
}

}  // namespace picture_files
