#include "foundation/image/VL_Image.h"
#include "foundation/image/image_decoders.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include <Iex.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfVersion.h>

namespace vellum::image_decoders {

namespace {

constexpr std::int64_t LARGEST_WORKSPACE = std::int64_t{1} << 30;   // bytes
constexpr std::int64_t MOST_LINES_IN_BLOCK = 256;                   // DWAB; all others have fewer
constexpr std::size_t LARGEST_CHANNEL_LIST = std::size_t{1} << 20;  // bytes

// Reads through the opened file, because OpenEXR would open the path again, which may name another file by
// then.
class Stream : public Imf::IStream {
public:
    explicit Stream(std::FILE* opened) : IStream("image"), file(opened) {}

    bool read(char data[], int size) override {
        if (size < 0 ||
            std::fread(data, 1, static_cast<std::size_t>(size), file) != static_cast<std::size_t>(size)) {
            throw Iex::InputExc("the file ends early");
        }
        // OpenEXR expects false after the last byte, not on the next read.
        int const next = std::fgetc(file);
        std::ungetc(next, file);
        return next != EOF;
    }
    std::uint64_t tellg() override { return static_cast<std::uint64_t>(std::ftell(file)); }
    void seekg(std::uint64_t position) override {
        if (std::fseek(file, static_cast<long>(position), SEEK_SET) != 0) {
            throw Iex::InputExc("no such place in the file");
        }
    }
    void clear() override { std::clearerr(file); }

private:
    std::FILE* file;
};

// Reads an OpenEXR header before OpenEXR does, because OpenEXR allocates whatever a header announces:
// attributes, tables of blocks, lines and tiles. isPlausible() is true when none of that is more than the
// file can fill or an image may need.
class HeaderCheck {
public:
    explicit HeaderCheck(std::FILE* opened) : file(opened) {
        std::fseek(file, 0, SEEK_END);
        length = std::ftell(file);
        std::rewind(file);
    }

    bool isPlausible() {
        std::int32_t magic = 0;
        std::int32_t version = 0;
        if (!_integer(magic) || !_integer(version) || !Imf::supportsFlags(Imf::getFlags(version)) ||
            Imf::getVersion(version) > Imf::EXR_VERSION || Imf::isMultiPart(version) ||
            Imf::isNonImage(version)) {
            return false;
        }
        std::string name;
        while (_text(name)) {
            if (name.empty()) {
                return _sizesArePlausible(Imf::isTiled(version));
            }
            if (!_attribute(name)) {
                return false;
            }
        }
        return false;
    }

private:
    bool _integer(std::int32_t& value) {
        std::array<unsigned char, 4> bytes{};
        if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
            return false;
        }
        value = _littleEndian(bytes.data());
        return true;
    }

    static std::int32_t _littleEndian(unsigned char const* bytes) {
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i) {
            value = value << 8 | bytes[i];
        }
        return static_cast<std::int32_t>(value);
    }

    bool _text(std::string& text) {
        text.clear();
        // 255 characters are the longest name of the format; a longer text is damage.
        for (int next = std::fgetc(file); next != EOF && text.size() < 256; next = std::fgetc(file)) {
            if (next == 0) {
                return true;
            }
            text.push_back(static_cast<char>(next));
        }
        return false;
    }

    bool _attribute(std::string const& name) {
        std::string type;
        std::int32_t size = 0;
        if (!_text(type) || !_integer(size)) {
            return false;
        }
        std::int64_t const begin = std::ftell(file);
        if (size < 0 || size > length - begin) {
            return false;
        }
        if (name == "dataWindow") {
            return size == 16 && _integer(left) && _integer(top) && _integer(right) && _integer(bottom);
        }
        if (name == "tiles") {
            std::int32_t x = 0;
            std::int32_t y = 0;
            if (size != 9 || !_integer(x) || !_integer(y)) {
                return false;
            }
            tileWidth = x;
            tileHeight = y;
        }
        // OpenEXR allocates the preview by its width and height, whatever the size of the attribute.
        if (type == "preview") {
            std::int32_t width = 0;
            std::int32_t height = 0;
            if (!_integer(width) || !_integer(height) || width < 0 || height < 0 ||
                std::int64_t{width} * height > size / 4) {
                return false;
            }
        }
        if (type == "idmanifest") {
            return false;  // decompresses to any length; only deep images, which are not read, have it
        }
        if (name == "channels" && !_channels(static_cast<std::size_t>(size))) {
            return false;
        }
        return std::fseek(file, static_cast<long>(begin + size), SEEK_SET) == 0;
    }

    // Each channel has a name with its zero and 16 bytes: pixel type, flags, two sampling rates.
    bool _channels(std::size_t const& size) {
        if (size > LARGEST_CHANNEL_LIST) {
            return false;
        }
        std::vector<unsigned char> list(size);
        if (std::fread(list.data(), 1, size, file) != size) {
            return false;
        }
        pixelBytes = 0;
        std::size_t at = 0;
        while (at < size && list[at] != 0) {
            auto const* const end = std::find(list.data() + at, list.data() + size, 0);
            at = static_cast<std::size_t>(end - list.data()) + 1;
            if (at + 16 > size) {
                return false;
            }
            pixelBytes += _littleEndian(list.data() + at) == Imf::HALF ? 2 : 4;
            at += 16;
        }
        return at < size;
    }

    bool _sizesArePlausible(bool const& isTiled) const {
        std::int64_t const width = std::int64_t{right} - left + 1;
        std::int64_t const height = std::int64_t{bottom} - top + 1;
        if (width < 1 || height < 1 || width > LARGEST_SIDE || height > LARGEST_SIDE || pixelBytes == 0) {
            return false;
        }
        // OpenEXR decodes whole blocks of lines, or whole rows of tiles, of all channels.
        if (!isTiled) {
            return width * std::min(height, MOST_LINES_IN_BLOCK) * pixelBytes <= LARGEST_WORKSPACE;
        }
        if (tileWidth < 1 || tileHeight < 1 || tileWidth > LARGEST_SIDE || tileHeight > LARGEST_SIDE) {
            return false;
        }
        std::int64_t const tiles =
            ((width + tileWidth - 1) / tileWidth) * ((height + tileHeight - 1) / tileHeight);
        std::int64_t const bytesOfRow =
            std::max(width, tileWidth) * tileHeight * std::max<std::int64_t>(pixelBytes, 16);
        return tiles * 8 <= length && bytesOfRow <= LARGEST_WORKSPACE;
    }

    std::FILE* file;
    std::int64_t length = 0;
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = -1;
    std::int32_t bottom = -1;
    std::int64_t tileWidth = 0;
    std::int64_t tileHeight = 0;
    std::int64_t pixelBytes = 0;  // of all channels together
};

// Subsampled channels would need interpolation; such images are rejected.
bool isFull(Imf::Channel const* channel) {
    return channel != nullptr && channel->xSampling == 1 && channel->ySampling == 1;
}

bool decode(std::FILE* file, VL_Image& image) {
    Stream stream(file);
    // 0 threads: decodes on the calling thread.
    Imf::InputFile input(stream, 0);
    Imf::ChannelList const& channels = input.header().channels();
    Imath::Box2i const window = input.header().dataWindow();

    // With RY and BY, Y is the luminance of a color image at full resolution, not a gray image.
    bool const isGray = isFull(channels.findChannel("Y")) && channels.findChannel("RY") == nullptr &&
                        channels.findChannel("BY") == nullptr;
    std::array<char const*, 4> names{"R", "G", "B", "A"};
    bool hasColor = false;
    for (std::size_t k = 0; k < 3; ++k) {
        hasColor = hasColor || isFull(channels.findChannel(names[k]));
    }
    if (!hasColor && !isGray) {
        return false;
    }
    if (!hasColor) {
        names = {"Y", nullptr, nullptr, "A"};
    }
    std::size_t const count = channels.findChannel("A") != nullptr ? 4 : 3;
    auto const width = static_cast<unsigned int>(window.max.x - window.min.x + 1);
    auto const height = static_cast<unsigned int>(window.max.y - window.min.y + 1);
    if (!image.create(width, height, static_cast<unsigned int>(count), 32)) {
        return false;
    }

    Imf::FrameBuffer target;
    std::size_t const rowLength = std::size_t{width} * count;
    float* const pixels = image.getBuffer32();
    for (std::size_t k = 0; k < count; ++k) {
        if (names[k] != nullptr) {
            target.insert(names[k], Imf::Slice::Make(Imf::FLOAT, pixels + k, window, count * sizeof(float),
                                                     rowLength * sizeof(float)));
        }
    }
    input.setFrameBuffer(target);
    input.readPixels(window.min.y, window.max.y);

    // Textures need three channels, so gray is copied to all.
    if (!hasColor) {
        for (float* pixel = pixels; pixel != pixels + rowLength * height; pixel += count) {
            pixel[1] = pixel[2] = pixel[0];
        }
    }
    // The format stores the top row first, OpenGL the bottom row.
    for (std::size_t row = 0; row < height / 2; ++row) {
        float* const upper = pixels + row * rowLength;
        std::swap_ranges(upper, upper + rowLength, pixels + (height - 1 - row) * rowLength);
    }
    return true;
}

}  // namespace

bool decodeExr(std::FILE* file, VL_Image& image) {
    if (!HeaderCheck(file).isPlausible()) {
        return false;
    }
    std::rewind(file);
    try {
        return decode(file, image);
    } catch (std::exception const&) {
        return false;
    }
}

}  // namespace vellum::image_decoders
