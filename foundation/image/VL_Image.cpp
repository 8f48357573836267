#include "foundation/image/VL_Image.h"

#include "foundation/image/image_decoders.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

namespace vellum {

namespace {

constexpr std::uint64_t MOST_PIXELS = std::uint64_t{256} << 20;
constexpr std::uint64_t MOST_BYTES = std::uint64_t{1} << 30;

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Format {
    std::size_t length;  // of the signature
    unsigned char signature[8];
    bool (*decode)(std::FILE*, VL_Image&);
};

constexpr std::array<Format, 4> FORMATS{{
    {8, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}, image_decoders::decodePng},
    {3, {0xFF, 0xD8, 0xFF}, image_decoders::decodeJpeg},
    {4, {0x76, 0x2F, 0x31, 0x01}, image_decoders::decodeExr},
    {2, {'#', '?'}, image_decoders::decodeHdr},
}};

}  // namespace

void VL_Image::Release::operator()(void* memory) const {
    std::free(memory);
}

VL_Image::VL_Image() = default;

VL_Image::VL_Image(VL_Image const& other) : VL_Image() {
    if (other.pixels == nullptr) {
        return;
    }
    pixels.reset(std::malloc(other._bytes()));
    if (pixels == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(pixels.get(), other.pixels.get(), other._bytes());
    columns = other.columns;
    rows = other.rows;
    pixelBits = other.pixelBits;
    channelBits = other.channelBits;
}

VL_Image::VL_Image(VL_Image&& other) noexcept
    : columns(std::exchange(other.columns, 0))
    , rows(std::exchange(other.rows, 0))
    , pixelBits(std::exchange(other.pixelBits, 0))
    , channelBits(std::exchange(other.channelBits, 0))
    , pixels(std::move(other.pixels)) {}

VL_Image& VL_Image::operator=(VL_Image other) noexcept {
    columns = other.columns;
    rows = other.rows;
    pixelBits = other.pixelBits;
    channelBits = other.channelBits;
    pixels = std::move(other.pixels);
    return *this;
}

VL_Image::~VL_Image() = default;

// == Contents ==

bool VL_Image::read(VL_String const& path) {
    destroy();
    try {
        // Opening a pipe would wait for its writer, and a device may never end.
        std::error_code fault;
        if (!std::filesystem::is_regular_file(path.c_str(), fault)) {
            return false;
        }
        std::unique_ptr<std::FILE, Close> const file(std::fopen(path.c_str(), "rb"));
        std::array<unsigned char, sizeof(Format::signature)> start{};
        if (file == nullptr || std::fread(start.data(), 1, start.size(), file.get()) != start.size()) {
            return false;
        }
        for (Format const& format : FORMATS) {
            if (std::memcmp(start.data(), format.signature, format.length) == 0) {
                std::rewind(file.get());
                // A separate image: a decoder that fails may leave pixels behind.
                VL_Image decoded;
                if (!format.decode(file.get(), decoded)) {
                    return false;
                }
                *this = std::move(decoded);
                return true;
            }
        }
    } catch (std::exception const&) {
        // Out of memory: the same result as for any other failure.
    }
    return false;
}

bool VL_Image::create(unsigned int const& width, unsigned int const& height, unsigned int const& channels,
                      unsigned int const& bitsPerChannel) {
    // The arguments may be references to members that destroy() clears. 64 bits, so that the products below
    // do not overflow.
    std::uint64_t const newWidth = width;
    std::uint64_t const newHeight = height;
    unsigned int const newChannels = channels;
    unsigned int const newBits = bitsPerChannel;
    destroy();

    if (newWidth == 0 || newHeight == 0 || newWidth > image_decoders::LARGEST_SIDE ||
        newHeight > image_decoders::LARGEST_SIDE || newWidth * newHeight > MOST_PIXELS) {
        return false;
    }
    if (newChannels < 1 || newChannels > 4 || (newBits != 8 && newBits != 16 && newBits != 32)) {
        return false;
    }
    std::uint64_t const bytes = newWidth * newHeight * newChannels * (newBits / 8);
    if (bytes > MOST_BYTES) {
        return false;
    }
    // calloc returns pages that the system commits on the first write, so a file whose header announces a
    // large image and that ends after it costs no memory.
    pixels.reset(std::calloc(bytes, 1));
    if (pixels == nullptr) {
        return false;
    }
    columns = static_cast<unsigned int>(newWidth);
    rows = static_cast<unsigned int>(newHeight);
    pixelBits = static_cast<int>(newChannels * newBits);
    channelBits = static_cast<int>(newBits);
    return true;
}

void VL_Image::destroy() {
    columns = 0;
    rows = 0;
    pixelBits = 0;
    channelBits = 0;
    pixels.reset();
}

// == Pixels ==

unsigned char* VL_Image::getBuffer() {
    return channelBits == 8 ? static_cast<unsigned char*>(pixels.get()) : nullptr;
}

unsigned char const* VL_Image::getBuffer() const {
    return channelBits == 8 ? static_cast<unsigned char const*>(pixels.get()) : nullptr;
}

unsigned short* VL_Image::getBuffer16() {
    return channelBits == 16 ? static_cast<unsigned short*>(pixels.get()) : nullptr;
}

unsigned short const* VL_Image::getBuffer16() const {
    return channelBits == 16 ? static_cast<unsigned short const*>(pixels.get()) : nullptr;
}

float* VL_Image::getBuffer32() {
    return channelBits == 32 ? static_cast<float*>(pixels.get()) : nullptr;
}

float const* VL_Image::getBuffer32() const {
    return channelBits == 32 ? static_cast<float const*>(pixels.get()) : nullptr;
}

std::size_t VL_Image::_bytes() const {
    return std::size_t{columns} * rows * static_cast<std::size_t>(pixelBits / 8);
}

}  // namespace vellum
