#include "viewport/files/common/binary_numbers.h"
#include "viewport/files/images/picture_decoders.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vellum::viewport {

namespace {

// Places in the file.
constexpr std::size_t HEIGHT = 12;
constexpr std::size_t WIDTH = 16;
constexpr std::size_t PIXEL_FLAGS = 80;
constexpr std::size_t CODE = 84;
constexpr std::size_t PIXEL_BITS = 88;
constexpr std::size_t MASKS = 92;  // red, green, blue, opacity
constexpr std::size_t HEADER_END = 128;
constexpr std::size_t DXGI_FORMAT = 128;
constexpr std::size_t DXGI_OPACITY = 144;
constexpr std::size_t DXGI_END = 148;

constexpr std::uint32_t HAS_OPACITY = 0x1;
constexpr std::uint32_t HAS_CODE = 0x4;
constexpr std::uint32_t IS_COLOR = 0x40;
constexpr std::uint32_t IS_GRAY = 0x20000;

constexpr std::uint32_t LONGEST_SIDE = 16384;

using Pixel = std::array<unsigned char, 4>;  // red, green, blue, opacity

template <class T>
T numberAt(std::string_view bytes, std::size_t place) {
    return binaryNumber<T>(bytes.data() + place, false);
}

std::uint32_t wordAt(std::string_view bytes, std::size_t place) {
    return numberAt<std::uint32_t>(bytes, place);
}

unsigned int byteAt(std::string_view bytes, std::size_t place) {
    return numberAt<std::uint8_t>(bytes, place);
}

constexpr std::uint32_t code(char a, char b, char c, char d) {
    return static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b) << 8 |
           static_cast<std::uint32_t>(c) << 16 | static_cast<std::uint32_t>(d) << 24;
}

unsigned char mixed(unsigned int a, unsigned int b, unsigned int partOfB, unsigned int whole) {
    return static_cast<unsigned char>(((whole - partOfB) * a + partOfB * b + whole / 2) / whole);
}

// == Compressed: blocks of 4 x 4 pixels ==

enum class Blocks { BC1, BC2, BC3, BC4, BC5 };

using Block = std::array<Pixel, 16>;

Pixel colorOf565(unsigned int value) {
    unsigned int const red = value >> 11 & 31U;
    unsigned int const green = value >> 5 & 63U;
    unsigned int const blue = value & 31U;
    return {static_cast<unsigned char>(red << 3 | red >> 2),
            static_cast<unsigned char>(green << 2 | green >> 4),
            static_cast<unsigned char>(blue << 3 | blue >> 2), 255};
}

/// The colors of a block: two, and two between them; or one between them and none.
void decodeColors(std::string_view bytes, bool mayHaveHoles, Block& block) {
    unsigned int const first = numberAt<std::uint16_t>(bytes, 0);
    unsigned int const second = numberAt<std::uint16_t>(bytes, 2);
    std::array<Pixel, 4> colors{colorOf565(first), colorOf565(second), Pixel{0, 0, 0, 255},
                                Pixel{0, 0, 0, 255}};
    bool const hasHoles = mayHaveHoles && first <= second;
    for (std::size_t k = 0; k < 3; ++k) {
        colors[2][k] = mixed(colors[0][k], colors[1][k], 1, hasHoles ? 2 : 3);
        colors[3][k] = hasHoles ? static_cast<unsigned char>(0) : mixed(colors[0][k], colors[1][k], 2, 3);
    }
    colors[3][3] = hasHoles ? 0 : 255;
    std::uint32_t const indices = wordAt(bytes, 4);
    for (std::size_t i = 0; i < block.size(); ++i) {
        block[i] = colors[indices >> (2 * i) & 3U];
    }
}

/// One channel of a block: two values, and those between them.
void decodeChannel(std::string_view bytes, std::size_t channel, Block& block) {
    unsigned int const first = byteAt(bytes, 0);
    unsigned int const second = byteAt(bytes, 1);
    std::array<unsigned char, 8> values{};
    values[0] = static_cast<unsigned char>(first);
    values[1] = static_cast<unsigned char>(second);
    unsigned int const steps = first > second ? 7 : 5;
    for (unsigned int i = 1; i < steps; ++i) {
        values[i + 1] = mixed(first, second, i, steps);
    }
    if (steps == 5) {
        values[6] = 0;
        values[7] = 255;
    }
    // In the 48 bits behind them.
    std::uint64_t const indices = numberAt<std::uint64_t>(bytes, 0) >> 16;
    for (std::size_t i = 0; i < block.size(); ++i) {
        block[i][channel] = values[indices >> (3 * i) & 7U];
    }
}

Block decodeBlock(Blocks kind, std::string_view bytes) {
    Block block{};
    switch (kind) {
    case Blocks::BC1:
        decodeColors(bytes, true, block);
        break;
    case Blocks::BC2:
        decodeColors(bytes.substr(8), false, block);
        for (std::size_t i = 0; i < block.size(); ++i) {
            block[i][3] = static_cast<unsigned char>((byteAt(bytes, i / 2) >> (i % 2 * 4) & 15U) * 17);
        }
        break;
    case Blocks::BC3:
        decodeColors(bytes.substr(8), false, block);
        decodeChannel(bytes, 3, block);
        break;
    case Blocks::BC4:
        decodeChannel(bytes, 0, block);
        for (Pixel& pixel : block) {
            pixel = {pixel[0], pixel[0], pixel[0], 255};
        }
        break;
    case Blocks::BC5:
        decodeChannel(bytes, 0, block);
        decodeChannel(bytes.substr(8), 1, block);
        for (Pixel& pixel : block) {
            pixel[3] = 255;
        }
        break;
    }
    return block;
}

/// How the opacity is to be taken.
enum class Opacity { STRAIGHT, MULTIPLIED, NONE };

/// Takes the opacity out of the colors of a pixel. What nothing is seen of keeps its colors.
void divideOpacityOut(unsigned char* pixel) {
    unsigned int const opacity = pixel[3];
    for (std::size_t k = 0; k < 3 && opacity > 0; ++k) {
        pixel[k] = static_cast<unsigned char>(std::min((pixel[k] * 255U + opacity / 2) / opacity, 255U));
    }
}

void settleOpacity(Opacity opacity, std::vector<unsigned char>& pixels) {
    for (std::size_t i = 0; opacity != Opacity::STRAIGHT && i < pixels.size(); i += 4) {
        if (opacity == Opacity::MULTIPLIED) {
            divideOpacityOut(&pixels[i]);
        } else {
            pixels[i + 3] = 255;
        }
    }
}

std::optional<Blocks> blocksOf(std::uint32_t fourLetters, std::uint32_t dxgiFormat) {
    if (fourLetters == code('D', 'X', 'T', '1') || (dxgiFormat >= 70 && dxgiFormat <= 72)) {
        return Blocks::BC1;
    }
    if (fourLetters == code('D', 'X', 'T', '2') || fourLetters == code('D', 'X', 'T', '3') ||
        (dxgiFormat >= 73 && dxgiFormat <= 75)) {
        return Blocks::BC2;
    }
    if (fourLetters == code('D', 'X', 'T', '4') || fourLetters == code('D', 'X', 'T', '5') ||
        (dxgiFormat >= 76 && dxgiFormat <= 78)) {
        return Blocks::BC3;
    }
    if (fourLetters == code('A', 'T', 'I', '1') || fourLetters == code('B', 'C', '4', 'U') ||
        dxgiFormat == 79 || dxgiFormat == 80) {
        return Blocks::BC4;
    }
    if (fourLetters == code('A', 'T', 'I', '2') || fourLetters == code('B', 'C', '5', 'U') ||
        dxgiFormat == 82 || dxgiFormat == 83) {
        return Blocks::BC5;
    }
    return std::nullopt;
}

bool decodeBlocks(Blocks kind, std::string_view bytes, std::uint32_t width, std::uint32_t height,
                  std::vector<unsigned char>& pixels) {
    std::size_t const blockBytes = kind == Blocks::BC1 || kind == Blocks::BC4 ? 8 : 16;
    std::size_t const columns = (std::size_t(width) + 3) / 4;
    std::size_t const rows = (std::size_t(height) + 3) / 4;
    if (bytes.size() / blockBytes < columns * rows) {
        return false;
    }
    pixels.resize(std::size_t(4) * width * height);
    for (std::size_t b = 0; b < columns * rows; ++b) {
        Block const block = decodeBlock(kind, bytes.substr(b * blockBytes, blockBytes));
        for (std::size_t i = 0; i < block.size(); ++i) {
            std::size_t const x = b % columns * 4 + i % 4;
            std::size_t const y = b / columns * 4 + i / 4;
            if (x < width && y < height) {
                std::copy(block[i].begin(), block[i].end(),
                          pixels.begin() + static_cast<std::ptrdiff_t>(4 * (y * width + x)));
            }
        }
    }
    return true;
}

// == Not compressed: pixels of up to 32 bits ==

struct PixelLayout {
    std::uint32_t bits;
    std::array<std::uint32_t, 4> masks;  // red, green, blue, opacity; 0: there is none
};

std::optional<PixelLayout> layoutOf(std::string_view bytes, std::uint32_t dxgiFormat) {
    switch (dxgiFormat) {
    case 0:
        break;
    case 28:
    case 29:
        return PixelLayout{32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000U}};
    case 87:
    case 91:
        return PixelLayout{32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000U}};
    case 88:
    case 93:
        return PixelLayout{32, {0xFF0000, 0xFF00, 0xFF, 0}};
    default:
        return std::nullopt;
    }
    std::uint32_t const flags = wordAt(bytes, PIXEL_FLAGS);
    std::uint32_t const bits = wordAt(bytes, PIXEL_BITS);
    if ((flags & (IS_COLOR | IS_GRAY)) == 0 || bits % 8 != 0 || bits == 0 || bits > 32) {
        return std::nullopt;
    }
    PixelLayout layout{bits, {}};
    for (std::size_t k = 0; k < 4; ++k) {
        layout.masks[k] = wordAt(bytes, MASKS + 4 * ((flags & IS_GRAY) != 0 && k < 3 ? 0 : k));
    }
    if ((flags & HAS_OPACITY) == 0) {
        layout.masks[3] = 0;
    }
    return layout;
}

/// The part of a pixel that a mask covers, as a number up to 255.
unsigned char masked(std::uint32_t pixel, std::uint32_t mask, unsigned char without) {
    if (mask == 0) {
        return without;
    }
    unsigned int shift = 0;
    while ((mask >> shift & 1U) == 0) {
        ++shift;
    }
    std::uint64_t const most = mask >> shift;
    return static_cast<unsigned char>((std::uint64_t((pixel & mask) >> shift) * 255 + most / 2) / most);
}

bool decodePixels(PixelLayout const& layout, std::string_view bytes, std::uint32_t width,
                  std::uint32_t height, std::vector<unsigned char>& pixels) {
    std::size_t const pixelBytes = layout.bits / 8;
    std::size_t const count = std::size_t(width) * height;
    if (bytes.size() / pixelBytes < count) {
        return false;
    }
    pixels.reserve(4 * count);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel = 0;
        for (std::size_t k = 0; k < pixelBytes; ++k) {
            pixel |= byteAt(bytes, i * pixelBytes + k) << (8 * k);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            pixels.push_back(masked(pixel, layout.masks[k], k < 3 ? 0 : 255));
        }
    }
    return true;
}

/// What the pixels of a file are.
struct Content {
    std::uint32_t fourLetters = 0;  // 0: none, or those that announce the format
    std::uint32_t dxgiFormat = 0;   // 0: none
    Opacity opacity = Opacity::STRAIGHT;
    std::string_view bytes;
};

/// Nothing for a file that ends before its pixels.
std::optional<Content> contentOf(std::string_view bytes) {
    if (bytes.size() < HEADER_END) {
        return std::nullopt;
    }
    Content content;
    content.bytes = bytes.substr(HEADER_END);
    content.fourLetters = (wordAt(bytes, PIXEL_FLAGS) & HAS_CODE) != 0 ? wordAt(bytes, CODE) : 0;
    if (content.fourLetters == code('D', 'X', 'T', '2') || content.fourLetters == code('D', 'X', 'T', '4')) {
        content.opacity = Opacity::MULTIPLIED;
    }
    if (content.fourLetters == code('D', 'X', '1', '0')) {
        if (bytes.size() < DXGI_END) {
            return std::nullopt;
        }
        constexpr std::uint32_t MULTIPLIED = 2;
        constexpr std::uint32_t OPAQUE = 3;
        std::uint32_t const mode = wordAt(bytes, DXGI_OPACITY) & 7U;
        content.opacity = mode == MULTIPLIED ? Opacity::MULTIPLIED
                          : mode == OPAQUE   ? Opacity::NONE
                                             : Opacity::STRAIGHT;
        content.dxgiFormat = wordAt(bytes, DXGI_FORMAT);
        content.fourLetters = 0;
        content.bytes = bytes.substr(DXGI_END);
    }
    return content;
}

}  // namespace

bool decodeDds(std::string_view bytes, VL_Image& image) {
    std::optional<Content> const content = contentOf(bytes);
    if (!content) {
        return false;
    }
    std::uint32_t const width = wordAt(bytes, WIDTH);
    std::uint32_t const height = wordAt(bytes, HEIGHT);
    if (width == 0 || height == 0 || width > LONGEST_SIDE || height > LONGEST_SIDE) {
        return false;
    }
    std::vector<unsigned char> pixels;
    bool isDecoded = false;
    if (std::optional<Blocks> const blocks = blocksOf(content->fourLetters, content->dxgiFormat)) {
        isDecoded = decodeBlocks(*blocks, content->bytes, width, height, pixels);
    } else if (std::optional<PixelLayout> const layout = layoutOf(bytes, content->dxgiFormat);
               layout && content->fourLetters == 0) {
        isDecoded = decodePixels(*layout, content->bytes, width, height, pixels);
    }
    if (!isDecoded) {
        return false;
    }
    settleOpacity(content->opacity, pixels);
    return takeRgba(pixels.data(), width, height, image);
}

std::string unknownDdsFormat(std::string_view bytes) {
    std::optional<Content> const content = contentOf(bytes);
    if (!content || blocksOf(content->fourLetters, content->dxgiFormat)) {
        return {};
    }
    if (content->fourLetters == 0) {
        std::uint32_t const format = content->dxgiFormat;
        return layoutOf(bytes, format)        ? std::string()
               : format >= 94 && format <= 96 ? "BC6H"
               : format >= 97 && format <= 99 ? "BC7"
               : format != 0                  ? "DXGI format " + std::to_string(format)
                                              : "pixels of an unknown kind";
    }
    std::string letters(bytes.substr(CODE, 4));
    bool const isText =
        std::all_of(letters.begin(), letters.end(), [](char c) { return c > ' ' && c <= '~'; });
    return isText ? letters : "format " + std::to_string(content->fourLetters);
}

}  // namespace vellum::viewport
