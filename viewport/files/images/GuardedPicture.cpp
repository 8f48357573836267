#include "viewport/files/images/GuardedPicture.h"

#include "viewport/files/common/GuardedRun.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace vellum::viewport {

namespace {

/// In front of the pixels. No outcome at all stands for a picture that cannot be read.
struct Header {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t channels;
    std::uint32_t bits;
};

void* pixelsOf(VL_Image& image) {
    return image.bitdepth() == 8    ? static_cast<void*>(image.getBuffer())
           : image.bitdepth() == 16 ? static_cast<void*>(image.getBuffer16())
                                    : static_cast<void*>(image.getBuffer32());
}

std::size_t sizeOf(VL_Image const& image) {
    return std::size_t(image.width()) * image.height() * static_cast<std::size_t>(image.pixdepth() / 8);
}

void encode(VL_Image& image, PutBytes const& put) {
    Header const header{image.width(), image.height(),
                        static_cast<std::uint32_t>(image.pixdepth() / image.bitdepth()),
                        static_cast<std::uint32_t>(image.bitdepth())};
    put(&header, sizeof header);
    put(pixelsOf(image), sizeOf(image));
}

bool decode(unsigned char const* bytes, std::size_t size, VL_Image& image) {
    Header header{};
    if (size < sizeof header) {
        return false;
    }
    std::memcpy(&header, bytes, sizeof header);
    // The sizes are within bounds once an image has them.
    if (header.channels < 3 || !image.create(header.width, header.height, header.channels, header.bits) ||
        size - sizeof header != sizeOf(image)) {
        return false;
    }
    std::memcpy(pixelsOf(image), bytes + sizeof header, sizeOf(image));
    return true;
}

}  // namespace

std::shared_ptr<VL_Image const> decodeGuarded(std::function<bool(VL_Image&)> const& decodePicture,
                                              Progress const& progress) {
    auto const image = std::make_shared<VL_Image>();
    GuardedRun run;
    run.work = [&decodePicture](PutBytes const& put) {
        VL_Image decoded;
        if (decodePicture(decoded)) {
            encode(decoded, put);
        }
    };
    run.encodeFault = [](std::string const& /*message*/) { return std::vector<unsigned char>(); };
    run.take = [&image](unsigned char const* bytes, std::size_t size) -> std::optional<Fault> {
        if (decode(bytes, size, *image)) {
            return std::nullopt;
        }
        return Fault{"", "is not a readable picture"};
    };
    return runGuarded(run, ImportLimits{}, progress) ? nullptr : image;
}

}  // namespace vellum::viewport
