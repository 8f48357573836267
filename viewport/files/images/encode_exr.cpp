#include "viewport/files/images/encode_picture.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <half.h>

namespace vellum::viewport {

namespace {

/// Takes the bytes: OpenEXR goes back in its streams, which pipes cannot.
class Memory : public Imf::OStream {
public:
    Memory() : OStream("") {}

    void write(char const* data, int count) override {
        std::size_t const end = place + static_cast<std::size_t>(count);
        if (bytes.size() < end) {
            bytes.resize(end);
        }
        std::memcpy(bytes.data() + place, data, static_cast<std::size_t>(count));
        place = end;
    }
    std::uint64_t tellp() override { return place; }
    void seekp(std::uint64_t position) override { place = position; }

    std::vector<char> bytes;

private:
    std::size_t place = 0;
};

/// The light of a color that a screen shows, for each of its values.
std::array<float, 256> linearLight() {
    std::array<float, 256> light{};
    for (std::size_t i = 0; i < light.size(); ++i) {
        double const value = static_cast<double>(i) / 255;
        light[i] =
            static_cast<float>(value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4));
    }
    return light;
}

std::vector<half> toLight(Picture const& picture) {
    std::array<float, 256> const light = linearLight();
    std::vector<half> values(picture.pixels.size());
    for (std::size_t i = 0; i + 3 < values.size(); i += 4) {
        float const opacity = static_cast<float>(picture.pixels[i + 3]) / 255;
        for (std::size_t k = 0; k < 3; ++k) {
            values[i + k] = half(light[picture.pixels[i + k]] * opacity);
        }
        values[i + 3] = half(opacity);
    }
    return values;
}

void addDepths(Picture const& picture, Imf::Header& header, Imf::FrameBuffer& buffer) {
    char const* const name = "depth.Z";
    header.channels().insert(name, Imf::Channel(Imf::FLOAT));
    // A slice takes what it reads from as variable.
    auto* const depths = const_cast<float*>(picture.depths.data());
    buffer.insert(name, Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(depths), sizeof(float),
                                   sizeof(float) * static_cast<std::size_t>(picture.width)));
}

void encode(Picture const& picture, Memory& memory) {
    std::vector<half> values = toLight(picture);
    Imf::Header header(picture.width, picture.height);
    Imf::FrameBuffer buffer;
    char const* const names[] = {"R", "G", "B", "A"};
    for (std::size_t k = 0; k < 4; ++k) {
        header.channels().insert(names[k], Imf::Channel(Imf::HALF));
        buffer.insert(names[k],
                      Imf::Slice(Imf::HALF, reinterpret_cast<char*>(values.data() + k), 4 * sizeof(half),
                                 4 * sizeof(half) * static_cast<std::size_t>(picture.width)));
    }
    if (!picture.depths.empty()) {
        addDepths(picture, header, buffer);
    }
    Imf::OutputFile file(memory, header);
    file.setFrameBuffer(buffer);
    file.writePixels(picture.height);
}

}  // namespace

std::string encodeExr(Picture const& picture, std::FILE* file) {
    Memory memory;
    // OpenEXR reports by exceptions, which end here.
    try {
        encode(picture, memory);
    } catch (std::exception const& exception) {
        return exception.what();
    }
    return std::fwrite(memory.bytes.data(), 1, memory.bytes.size(), file) == memory.bytes.size()
               ? std::string()
               : std::strerror(errno);
}

}  // namespace vellum::viewport
